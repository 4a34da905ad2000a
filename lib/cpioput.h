// cpioput.h: cpio archives on standard output.
// Builds on: errexit.h.
//
// Writes the portable ASCII format (docs/formats/cpio.md) to descriptor 1, in
// blocks of 5120 bytes, each with one write(2). One archive at a time.
// Always: what was written and what is held back make up whole entries: a file
// that cannot be taken is left out, one that ends early is filled with zeros.
// Order: cpiosetup, any cpioput, cpiofin.
// Errors: a line on standard error that names the file; nothing is fatal.
// There are no results: after cpioput() and cpiofin() errno is 0 when the
// entry, or the archive, is whole, and tells the reason when it is not. A
// write that fails is reported once, and ends the archive: nothing more is
// read or written until the next cpiosetup(), and errno stays its reason. A
// closed pipe ends the process unless it ignores SIGPIPE.
#ifndef TOVAN_CPIOPUT_H
#define TOVAN_CPIOPUT_H

#include "attrs.h"

#include <sys/stat.h>

TOVAN_BEGIN_C

// Starts an archive; whatever an unfinished one held back is gone.
//   use_now   non-zero: every entry gets the current time
void cpiosetup(int use_now);

// Appends an entry: its header, and the content of a regular file.
//   path      of the file to read; null for a last entry without content,
//             which brings 81920 bytes of padding with it
//   name      in the archive, up to 257 characters; "./" in front is dropped
//   status    of the file, for the header; null: that of the file read, or
//             all zero without a path. The size is always that of the file
//             read, and 0 for what is not a regular file; a symbolic link's
//             target is given as the content of a regular file
//   fails     the entry is left out: "Can't open `NAME'", "Cannot stat
//             `NAME'", or "Can't archive `NAME': FIELD does not fit" for a
//             size or a time that passes 32 bits, an owner, group or number of
//             links that passes 18, and a longer name. It is filled with
//             zeros: "`NAME' shrank, filled with zeros", after "Cannot read
//             temp file" when that was an error
//   edge      inode numbers that pass 18 bits are cut, and changed where
//             another file with several links has the same: of such files
//             only the names of one have equal numbers
void cpioput(const char *path, const char *name, const struct stat *status);

// Ends the archive with the entry "TRAILER!!!". Readers need no more than
// what whole blocks hold; the last unfinished block is never written.
void cpiofin(void);

// Formats the header of an entry with the name that cpioput() has seen last.
//   size      of the content; its low 32 bits count
//   status    null: all zero
void bintochar(long size, const struct stat *status);

// Queues bytes. A full block is written when the next byte comes.
void writehdr(const char *bytes, int count);

// The 32-bit value of two halves, the more significant one first.
//   result    0 to 4294967295
long mklong(const unsigned short halves[2]);

TOVAN_END_C

#endif
