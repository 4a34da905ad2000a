// dystr.h: growable, always NUL-terminated strings (the dy record).
// Builds on: chkalloc.h, convert.h, istype.h.
//
// The text type of the library. A record is kept by value, in a local or a
// static, and passed by address; every operation returns the buffer, to be
// used at once as a plain string. NULs within the text are text.
// Always: length + 1 <= capacity and buffer[length] is NUL. Any call may move
// the buffer; use the address it returns, none from before.
// Growth: k more characters than fit raise the capacity by k + 64, rounded
// down to a multiple of 64; one more character raises it by 64. The block may
// be larger than the capacity says.
// Order: dynew (or dyalloc, or a zeroed record and an appending call), any
// operations, then free(buffer), or dyfree for a record of the pool.
// Errors: out of memory ends the process (nocore), also when a string would
// pass 2^31-1 bytes; arguments are not checked unless a function says so.
#ifndef TOVAN_DYSTR_H
#define TOVAN_DYSTR_H

#include "attrs.h"

#include <stdarg.h>

TOVAN_BEGIN_C

typedef struct dy {
    int length;       // characters, without the terminator
    int marker;       // 1: a string (arrays have 0 here)
    struct dy *next;  // in the pool only
    int capacity;     // bytes; 0: there is no buffer
    char *buffer;     // a heap block of the record's own
} dy;

// In what follows, a negative count stands for the length of the string that
// it counts, and bytes to be added may be a part of the string itself.

// Makes an empty string. What the record held before is not looked at.
//   size      of the buffer; 16 when it is 0 or less
//   result    the record
//   owner     caller: free(string->buffer)
dy *dynew(dy *string, int size);

// Empties a string.
//   string    also a zeroed record, which then is made as by dynew
//   size      the capacity wanted at least; a smaller buffer is released and
//             replaced by one of exactly this size
//   result    the record
dy *dyreuse(dy *string, int size);

// Adds to the capacity, and changes nothing else.
char *dygrow(dy *string, int extra);

// Appends a text; null is the empty text.
char *dystr(dy *string, const char *text);

// Appends exactly n bytes; nothing when n is 0 or less.
char *dynstr(dy *string, const char *bytes, int n);

// Appends the bytes in [start, end); nothing when end lies before start.
char *dyspan(dy *string, const char *start, const char *end);

// Appends a character; nothing for a NUL.
//   result    the character, not the buffer
int dyaddc(dy *string, int character);

// Appends "/", unless the string is empty or ends in one.
char *dyaddslash(dy *string);

// Appends a blank, unless the string is empty or ends in a blank or a tab.
char *dyaddspace(dy *string);

// Appends copies of a character until the length is `column`.
//   edge      nothing is appended for a NUL, or when the string is that long;
//             room is made all the same, by the step for `column` characters,
//             or for one when the string is that long
char *dypadc(dy *string, int character, int column);

// Removes blanks, tabs and newlines at the end, and no other character.
char *dytrim(dy *string);

// Appends a component and "/" to a path, behind a "/" if one is missing.
//   component without its trailing slashes; "." and the empty component add
//             at most the missing "/" (none when the component began with
//             one). Its first character is looked at even when n is 0
//   edge      "x/" and "/y" make "x//y/"
char *dydiradd(dy *string, const char *component, int n);

// Inserts bytes before a position, counted from 0.
//   edge      a negative position is the start, one behind the end the end
char *dyinsert(dy *string, int position, const char *bytes, int n);

// Removes the characters in [from, to).
//   from, to  addresses inside the buffer, from before to
//   result    the buffer
//   fails     not such a range: null, string untouched
//   edge      to == buffer + length is allowed and cuts the tail
char *dycut(dy *string, char *from, char *to);

// Cuts the string to n characters.
//   n         a negative one takes so many off the end, at most all
//   edge      a string that is not longer stays
char *dytruncate(dy *string, int n);

// Appends formatted text. Directives begin with "@":
//   @s        const char *: a string; null is the empty one
//   @S        const char *start, const char *end: the bytes between them
//   @d        int: in decimal
//   @c        int: a character; nothing for a NUL
//   @@        none: "@"
//   @         before anything else, or at the end: "@"
// An empty format touches nothing, the terminator included.
char *dyfmt(dy *string, const char *format, ...);
char *dyvfmt(dy *string, const char *format, va_list arguments);

// Takes an empty string from the pool of spare records.
//   owner     pool: dyfree
dy *dyalloc(void);

// Gives a string back to the pool; a small buffer stays with it for the next
// dyalloc, a large one is released.
//   string    a record of the pool, live
void dyfree(dy *string);

// Sets the size of a new buffer in dyalloc (at first 56) and the capacity
// from which dyfree releases a buffer (at first 120). A value that is 0 or
// less leaves its setting unchanged.
void dyalloc_sizes(int initial, int retain);

// Makes a permanent copy of n bytes and a terminator, packed side by side
// with others: for many short strings that are kept.
//   owner     process; never released
char *dycache(const char *bytes, int n);

TOVAN_END_C

#endif
