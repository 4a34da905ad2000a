// getdylin.h: line and word input.
// Builds on: errexit.h, chkalloc.h, istype.h, dystr.h, dypadd.h.
//
// Lines and words of any length, read into a dynamic string: of a stream, or
// of a descriptor, which is faster. NULs in the input are kept as text.
// Always: from a stream no byte beyond the line, or the one behind the word,
// is taken, so that other reads of the same stream may stand between; a
// descriptor is read ahead, 4096 bytes at a time.
// Order: any; rdy_init before the other rdy functions.
// Errors: the end of the input, and a read error, give null. Out of memory
// ends the process (nocore), also when a line would pass 2^31-1 bytes.
#ifndef TOVAN_GETDYLIN_H
#define TOVAN_GETDYLIN_H

#include "attrs.h"
#include "dypadd.h"
#include "dystr.h"

#include <stdio.h>

TOVAN_BEGIN_C

// A reader of lines of a descriptor.
typedef struct rdy {
    int descriptor;
    int position;  // of the next unread byte in the buffer
    int fill;      // bytes in the buffer
    int at_end;    // a read gave nothing or failed: there is no other
    char buffer[4096];
} rdy;

// The first block of a file.
typedef struct blk1 {
    char *name;  // the file read, on the heap; null: none
    char *end;   // just past the last byte read, where there is a NUL
    char data[1025];
} blk1;

// Appends the next line to a string, without its newline and without one
// carriage return before that. At the end of the input the newline may be
// missing; there a control-Z (26) that ends the line goes first.
//   line      a zeroed record will do
//   skip      not 0: blanks and tabs at the start of the line are left out
//   result    the buffer; null when there is no line any more
//   edge      a lone carriage return at the end of the input is an empty
//             line; a lone control-Z is none. The capacity is that of a
//             string to which the characters were added one by one
char *readdyline(FILE *stream, dy *line, int skip);

// Reads the next line into a string.
//   line      emptied first; a zeroed record gets 56 bytes
//   result    as readdyline
//   edge      on a stream that is at its end the string stays as it is
char *getdyline(FILE *stream, dy *line, int skip);

// Appends the next line to what a string holds, as readdyline does.
//   line      a zeroed record gets 120 bytes
//   edge      on a stream that is at its end the string stays as it is
char *getdycline(FILE *stream, dy *line, int skip);

// Reads the next word, which white space of any kind ends; the one character
// behind the word is taken too.
//   word      emptied first; a zeroed record gets 56 bytes
//   flags     1: a "#" between words starts a comment, up to the newline
//   result    the buffer; null when there is no word any more, and then the
//             string stays as it is
char *getdyword(FILE *stream, dy *word, int flags);

// Makes a line reader.
//   descriptor  stays the caller's, and open
//   owner     caller: free
rdy *rdy_init(int descriptor);

// Drops what the buffer holds and reads once.
//   result    the number of bytes, 0 at the end or on an error
int rdyfilbuf(rdy *reader);

// Reads the next line into a string, without its newline and without one
// carriage return before that.
//   line      emptied first; a zeroed record gets 120 bytes
//   flags     the sum of
//             1: blanks and tabs at the start are left out
//             2: blanks and tabs at the end, before a carriage return too,
//                are removed
//             4: the line is appended to what the string holds
//   result    the buffer; null when the input ended and added nothing
//   edge      a last line without a newline is not cleaned at its end. With
//             4, the cleaning sees the whole string, also what it held before
char *rdy_getline(rdy *reader, dy *line, int flags);

// Appends a pointer to each word of the whole input; white space of any kind
// separates words.
//   name      of the input, in messages
//   result    the array
//   owner     the words: process, never released
//   fails     ends the process with "%s: contains excessively long file name"
//             or "%s: %s" (the system's text for the read error)
//   edge      words of up to 16256 bytes are always accepted, longer ones not
//             always; a word that holds a NUL reads as its front
void **rdflist(int descriptor, dyp *array, const char *name);

// Reads the first 1024 bytes of a file, or what there is.
//   block     zeroed before its first use; null: a record of the library's,
//             good until the next call with null
//   result    the record. One that holds a file of the same name comes back
//             as it is, and nothing is read
//   owner     the name: record. Release with free(block->name)
//   fails     null with errno, and the record holds no name
blk1 *read1blk(const char *path, blk1 *block);

TOVAN_END_C

#endif
