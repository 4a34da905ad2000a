// rxpcomp.h: regular expressions.
// Builds on: chkalloc.h, dystr.h.
//
// A pattern is compiled into a small program, which is run against subjects:
//
//     if (rxpcomp("^\\([a-z]+\\)=\\(.+\\)", 0, 0) < 0) ...
//     if (rxpeval(line) > 0) name = rxprewrite("\\1");
//
// The syntax is the library's own. Outside of brackets:
//
//     c          the character itself; \c likewise, where c is not below
//     .  [a-c]  [^a-c]   any character; one of a class; one of all others
//     ^  $       start and end of the subject, first and last in a pattern
//     x*  x+     zero or more, one or more of the item before
//     <x|y>      a group and its alternatives; outside of a group "|" and ">"
//                are literals
//     \( x \)    sub-match, numbered 1 to 9 by its start
//     \1 to \9   the same text as that sub-match
//     \{  \}  \=  start and end of an identifier; a whole identifier
//     \_  \-     one or more, zero or more white-space characters
//     \#  \~  \!  a digit; a character that is not white space; a control
//                character, DEL or an 8-bit byte
//     !x         in front of a pattern: turns the result around
//
// Of all ways to match, the leftmost start counts, and from there the farthest
// end that the branches of the program find.
// Always: rxpbuf holds a program that ends within it, or a null first byte.
// Order: rxpcomp, rxpeval or a copy of rxpbuf and rxppeval, then `matches`
// and rxprewrite.
// Errors: negative codes; nothing is printed. Out of memory ends the process
// (nocore).
// Time: proportional to the subject, whatever the pattern is, as long as it
// has no \1 to \9. Memory: none for most patterns; where alternatives meet again
// and again, some 16 bytes for each branch of the pattern and character of the
// subject, and 12 more for each sub-match.
// All of it is one process-wide state.
#ifndef TOVAN_RXPCOMP_H
#define TOVAN_RXPCOMP_H

#include "attrs.h"

TOVAN_BEGIN_C

// The last match: pair 0 is the whole, pair k is sub-match k.
typedef struct rxpmatch {
    int count; /* the highest sub-match that was started, 0 for none */
    struct {
        const char *start; /* in the subject; null: not started */
        const char *end;   /* null: not ended */
    } pair[10];
} rxpmatch;

// Classes of the bytes: 0x01 a to z, 0x02 digits, 0x04 null, 0x08 the
// characters "#%&',/:;?@`~ and newline, 0x10 tab, carriage return, blank and
// newline, 0x20 A to Z, 0x40 underbar, 0x80 what is special in patterns.
extern const unsigned char re_type[256];

// The program that was compiled last. A copy of it may be run at any time:
// copy the result of rxpcomp() and one byte more.
extern unsigned char rxpbuf[1537];

// The character of the pattern that ended it: the delimiter, the null, or a
// byte of 0x80 or above. Set by a successful rxpcomp().
extern const char *rxpeof;

// Valid after an evaluation that found a match, as long as its subject.
extern rxpmatch matches;

// Compiles a pattern into rxpbuf.
//   pattern    up to its null, the delimiter or a byte of 0x80 or above
//   delimiter  a character that ends the pattern; 0 for none
//   fold       not 0: letters that the pattern writes small match both cases
//   result     the length of the program without its final null byte
//   fails      -1 bad bracket, -4 special character as delimiter, -5 an
//              operator that cannot start an item, -6 reference to a
//              sub-match that is not closed, -7 more than 255 bytes (behind a
//              leading "!", up to the null) or 256 states, -8 more than 9
//              sub-matches, -9 unbalanced groups, brackets or sub-matches,
//              -10 an item is missing. Of several faults the leftmost counts.
//              rxpbuf is no program then; after -4, and -7 by the length, it
//              is as it was
//   edge       an empty pattern matches everywhere
int rxpcomp(const char *pattern, int delimiter, int fold);

// Prints a program, one state a line, to standard output.
//   program   compiled without error; it is not checked
void rxpdump(const unsigned char *program);

// Looks for a match of a program in a subject.
//   program   rxpbuf, or any copy of it
//   result    1 when there is one, else 0; exchanged for a pattern with a
//             leading "!"; -6 when this is not a program
//   edge      a pattern that ends in ".+" or ".*" records an end only if the
//             program branches before: ".+" gives an empty pair 0
int rxppeval(const char *subject, const unsigned char *program);

// rxppeval() of rxpbuf.
int rxpeval(const char *subject);

// Whether a program starts with "^".
//   result    1 or 0; -1 when this is not a program
int rxpcaret(const unsigned char *program);

// Whether a pattern had a leading "!".
//   result    1 or 0; -1 when this is not a program
int rxpinvert(const unsigned char *program);

// A text with pieces of the last match. \0 to \9 stand for the text of that
// pair (nothing above the count), \\ for a backslash, \b \n \r \t for
// backspace, newline, carriage return and tab. Before anything else a
// backslash is itself.
//   owner     caller, released with free
char *rxprewrite(const char *replacement);

TOVAN_END_C

#endif
