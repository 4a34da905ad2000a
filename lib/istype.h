// istype.h: character classes and printable forms of characters.
// Builds on: errexit.h, chkalloc.h, strutil.h.
//
// Always: classes do not depend on the locale. Codes 128 to 255 are in none,
// unless applistype() puts them into the application's.
// Errors: calling applistype() twice ends the process; nothing else fails.
#ifndef TOVAN_ISTYPE_H
#define TOVAN_ISTYPE_H

#include "attrs.h"

TOVAN_BEGIN_C

// The classes of a character, by its unsigned value:
//   0x0001    upper-case letters
//   0x0002    lower-case letters
//   0x0004    decimal digits
//   0x0008    white space: tab, newline, vertical tab, form feed, carriage
//             return, blank
//   0x0010    punctuation: printable, neither letter nor digit nor blank
//   0x0020    control characters: 0 to 31 and 127
//   0x0040    hexadecimal letters of both cases
//   0x0080    the underscore
//   0x0100    the blank
//   0x0200    the tab
//   0x0400    the newline
//   0x0800    special to the shell: " $ & ' ( ) * ; < = > ? [ \ ] ^ ` |
//   0x1000    special inside double quotes: " $ \ `
//   0x2000    NUL
//   0x4000    the comment character #
//   0x8000    the application's own, see applistype()
//   owner     process; written by applistype() only
extern unsigned short _istype[256];

// The printable form of a character, by its unsigned value: itself, one of
// \a \b \t \n \v \f \r, or a backslash and three octal digits.
extern const char *const rep_char[256];

// Puts every character of the string into class 0x8000.
//   fails     a second call ends the process: "LOGIC ERROR - applistype()
//             called a second time"
void applistype(const char *characters);

// The two-character mnemonic of a graphic character of code page 437.
//   result    null for codes without one, inside 0 to 255 or not
//   owner     process
const char *frogtostr(int code);

// The code whose mnemonic equals the string; the first call builds the table
// for it on the heap.
//   result    -1 when there is none
int strtofrog(const char *mnemonic);

TOVAN_END_C

#endif
