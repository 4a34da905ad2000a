// strutil.h: small string and memory functions with exact edges.
// Builds on: chkalloc.h, istype.h.
//
// Always: strings are not null unless a function says so, and no result
// depends on the locale. Results inside a string are char *, so that who may
// write the string may write there.
// Errors: out of memory ends the process (svstr, strrindex); nothing else
// fails.
#ifndef TOVAN_STRUTIL_H
#define TOVAN_STRUTIL_H

#include "attrs.h"

#include <stddef.h>
#include <stdint.h>

TOVAN_BEGIN_C

// The usual table for strhash: a permutation of 0 to 255 that stays the same
// from version to version.
extern const unsigned char fhash_tab[256];

// What separates paths: 0x1 marks "/", 0x2 the backslash, 0x4 ":", 0x8 ";".
extern const unsigned char p_table[256];

// A saved string. The head of a list is a zeroed node of the caller's, of
// which only `next` is used.
typedef struct svnode {
    struct svnode *next;
    char *key;
    char *value;
} svnode;

// The first, or last, occurrence of a character.
//   text      may be null
//   result    null when there is none; character 0 finds the terminator
char *str_chr(const char *text, int character);
char *str_rchr(const char *text, int character);

// The index of the first, or last, occurrence of a pattern.
//   result    -1 when there is none; an empty pattern occurs nowhere
int strindex(const char *text, const char *pattern);
int strrindex(const char *text, const char *pattern);

// The 8-bit hash of a string: h = table[h xor byte], from 0.
//   length    null, or where the length of the string goes
//   table     256 bytes
//   result    0 to 255
int strhash(const char *text, int *length, const unsigned char *table);

// The same of exactly `n` bytes; 0 when n is 0 or less.
int strnhash(const char *bytes, int n, const unsigned char *table);

// Compares two strings for qsort(3).
//   a, b      each the address of a const char *
//   result    less than, equal to or greater than 0; the first characters
//             compare as signed bytes, the others as strcmp(3) has them
int strpcmp(const void *a, const void *b);

// How many characters two strings have in common at their starts.
int lenmatch(const char *a, const char *b);

// What follows the last "/" of a path: the path itself when there is none,
// an empty string when it is the last character.
char *leafnm(const char *path);

// How many "/" a path starts with.
int p_rootlen(const char *path);

// Cuts white space (class 0x0008) off the end, in place.
//   result    the string
char *trim(char *text);

// The first character that is not a blank, tab or newline.
char *overwhite(const char *text);

// The first blank, tab or newline, or the terminator.
char *nextwhite(const char *text);

// Rewrites a string as its runs of letters and digits with one blank between
// two of them.
//   fold      not 0: capitals become small letters
//   result    the string, not longer than before
char *clean(char *text, int fold);

// The bracket that closes one which was opened just before the text.
//   result    the terminator when it is not there
//   edge      when open equals close, the first one closes
char *closing_bracket(const char *text, int open, int close);

// Gives the end of a token back to a scanner: its characters down to
// position n, the last first, sign-extended; then cuts the token there.
//   n         the length to keep; below 0 or beyond the length means 0
//   length    the token's length; becomes n
//   last      becomes the last character that is kept, sign-extended;
//             left alone when none is
void lexless(int n, int *length, int *last, char *token,
             void (*give_back)(int character));

// Saves a value under a key, replaces it, or (value null) removes it.
//   head      not null
//   result    the saved copy; null after a removal
//   owner     library until the key is next set to another value or removed
//   edge      an equal value is not saved anew; the value may lie inside the
//             saved one; an empty key is saved, but fndsvstr() passes it over
const char *svstr(svnode *head, const char *key, const char *value);

// The value saved under a key.
//   result    null when there is none, for an empty key, for a null head
//   owner     as svstr()
const char *fndsvstr(const svnode *head, const char *key);

// Functions on areas of `n` bytes; when n is 0 the areas may be null.

// The first such byte, or null.
void *mem_chr(const void *area, int byte, size_t n);

// 0 when the areas are equal, else 1, whichever is the greater.
int mem_cmp(const void *a, const void *b, size_t n);

// Copy an area; it may overlap the destination.
//   result    the destination
void *mem_cpy(void *destination, const void *source, size_t n);
void *mem_move(void *destination, const void *source, size_t n);

// Fills an area.
//   result    the area
void *mem_set(void *area, int byte, size_t n);

// Fills an area with zeros; a null one is left alone whatever n says.
//   result    the area
void *mem_zero(void *area, size_t n);

// The number rounded up to a multiple of 4.
uintptr_t wordalign(uintptr_t number);

TOVAN_END_C

#endif
