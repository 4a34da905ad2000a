// fastout.h: output without stdio, output in columns, and streams that append.
// Builds on: chkalloc.h, errexit.h.
//
// An fo record collects typed items and writes them in blocks of 2048 bytes.
// Always: between calls fewer than 2048 bytes are collected.
// Order: fo_init, any fo_put, fo_flush, then free the record.
// Errors: a record with a name ends the process when a write fails; one
// without reports it. The column functions write to standard output and
// leave its errors to the stream.
#ifndef TOVAN_FASTOUT_H
#define TOVAN_FASTOUT_H

#include "attrs.h"

#include <stdio.h>

TOVAN_BEGIN_C

typedef struct fo {
    int descriptor;    // -1: all output is off
    int count;         // bytes collected
    const char *name;  // in the message of a failed write; null: not fatal
    char buffer[2064];
} fo;

// A new record that writes to a descriptor.
//   name      not copied; null makes failing writes non-fatal
//   result    never null
//   owner     caller, free()
fo *fo_init(int descriptor, const char *name);

// Appends items: each a code and what belongs to it, then a code 0.
//     1  const char *           the string
//     2  int                    one character, the low byte
//     3  unsigned               octal digits
//     4  const char *, int      exactly so many bytes
//     5  unsigned               octal digits, as 3
//     6  int                    decimal digits, "-" in front when negative
//   result    0
//   fails     another code ends the process ("Logic error, fo_put op %d
//             invalid"); a failing write as fo_write, and where that only
//             reports, the block that could not be written is dropped
int fo_put(fo *out, ...);

// Writes the first n collected bytes; the others move to the front.
//   result    0; -1 with errno for a record without a name, unchanged
//   fails     with a name: ends the process ("name: system text")
//   edge      n == 0 writes nothing
int fo_write(fo *out, int n);

// fo_write() of everything.
int fo_flush(fo *out);

// Writes a text to standard output.
//   width     blanks follow up to so many characters
//   last      non-zero: a newline follows instead
void putstr(const char *text, int width, int last);

// Writes a list in columns, ordered down the columns.
//   prefix        in front of each line; null for none
//   list          null-terminated
//   width         of a line; the columns get what prefix and one character
//                 leave of it
//   column_width  of the widest entry; below 1: measured
//   edge          where not even two columns fit, an entry a line
void putcols(const char *prefix, const char *const *list, int width,
             int column_width);

// Writes each text of a null-terminated list.
//   newline   non-zero: a newline behind each
void putlist(const char *const *list, FILE *stream, int newline);

// fopen(3), with the append modes "a", "ab", "a+" and "a+b" opened so that
// every write goes to the end whoever else writes. "a" and "ab" start there.
//   result    null with errno
//   owner     caller, fclose()
FILE *fopenfix(const char *path, const char *mode);

TOVAN_END_C

#endif
