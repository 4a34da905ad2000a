// sfixfile.h: files through the dictionary.
// Builds on: errexit.h, dystr.h, istype.h, strutil.h, getdylin.h, fmatch.h,
// sfdict.h.
//
// A file is copied line by line to a function of the program, with its
// references replaced and its control lines obeyed: cases that select parts
// by patterns, errors, comments, flags. docs/formats/fixed-file.md has them
// all. The bits of sf_uflag (sfdict.h) say what is done.
// Order: setsfwrite, settildecnv if wanted, then any number of sfixfile.
// Errors: wrong references are reported and counted in the result. An error
// of the structure ends the process ("progname: message") or, when sf_uflag
// is not 0, is written the same way and counted.
#ifndef TOVAN_SFIXFILE_H
#define TOVAN_SFIXFILE_H

#include "attrs.h"

TOVAN_BEGIN_C

// The file being fixed and the number of the line read last, from 1. Both
// stay after sfixfile() until its next call; the name is the caller's text.
extern const char *sfixfile_file;
extern int sfixfile_lc;

// Copies a file to the writer. The name __FILE__ is set to its path.
//   path      "-" is standard input, once in a process, sfdict() included
//   check     not 0: each line with a wrong reference is reported once more,
//             "progname: path:line: possible syntax error"
//   result    bit 0: a reference was wrong (bits before the last structural
//             error are lost); bit 1: the structure was
//   fails     as sf_openfile(); "path: system text" when reading fails. Both
//             end the process, as an error of the structure does
//   edge      with bit 0 of sf_uflag only the names in use are traced: cases
//             select nothing, errors are not reported
int sfixfile(const char *path, int check);

// Hands a text to the writer.
//   text      `length` bytes that may be overwritten
//   convert   not 0: after settildecnv(), and for 2 bytes or more, "~~" is
//             written as "~", "~." as byte 255, "~" and a mnemonic of
//             frogtostr() as its character; a "~" before anything else stays
//   fails     without a writer: "Logic error: setsfwrite() not been called"
//             ends the process
void sfput(char *text, int length, int convert);

// Installs the writer, called once a line; null takes it away.
//   text      `length` bytes, the newline included, valid during the call
void setsfwrite(void (*writer)(const char *text, int length));

// Switches the conversion of tildes on, for the rest of the process.
//   result    0
int settildecnv(void);

TOVAN_END_C

#endif
