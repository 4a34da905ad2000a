// tarout.h: tar archives on standard output.
// Builds on: errexit.h, chkalloc.h.
//
// Writes the old format (docs/formats/tar.md) to descriptor 1, in records of
// 10240 bytes, each with one write(2). One archive at a time.
// Always: what was written and what is held back make up whole entries: a file
// that cannot be taken is left out, one that ends early is filled with zeros.
// Order: tarinit, any tarout, tardone.
// Errors: a line on standard error with progname and the file's name; only
// calls out of order are fatal ("logic error - tarinit() not done"). There are
// no results: after tarout() and tardone() errno is 0 when the entry, or the
// archive, is whole, and tells the reason when it is not. A write that fails
// is reported once ("standard output: ..."), and ends the archive: nothing
// more is read or written until the next tarinit(), and errno stays its
// reason. A closed pipe ends the process unless it ignores SIGPIPE.
#ifndef TOVAN_TAROUT_H
#define TOVAN_TAROUT_H

#include "attrs.h"

#include <sys/stat.h>

TOVAN_BEGIN_C

// Starts an archive; whatever an unfinished one held back is gone.
//   uid, gid  in every header; -1: those of the file
void tarinit(int uid, int gid);

// Appends a file, directory or link with its content. The second name of a
// file becomes a hard link to the path that was read first.
//   path      what is read; not null
//   name      in the archive, up to 99 characters; null: the path. A directory
//             gets a "/" behind it
//   status    for the header; null: that of what `name` names, or of the path.
//             The size is always that of the path
//   fails     the entry is left out: "NAME name too long", "PATH " and a
//             system text, "NAME size does not fit", "NAME modification time
//             does not fit" (11 octal digits), "No input file specified" for
//             a null path. Or it is written, but "NAME shrank, filled with
//             zeros" (after "tarout " and a system text when that was an
//             error), "NAME owner does not fit", "NAME group does not fit":
//             the low 18 bits; "NAME link target too long": 99 characters
//   edge      a symbolic link that cannot be read is followed; what is
//             neither file nor directory nor link becomes an empty file.
//             Headers of links keep the path's size, though no content
//             follows; there are readers that look for it behind a symbolic
//             link: tarheader() with the size 0 suits all of them
void tarout(const char *path, const char *name, const struct stat *status);

// Ends the archive: two blocks of zeros, and more to the end of the record.
void tardone(void);

// Queues one header.
//   directory_length  where the "/" of a directory goes, the length of its
//             name; 0: none
//   size      of the content; its low 33 bits count
//   link      target of a hard or (by the status) a symbolic link; null: none
void tarheader(const char *name, int directory_length,
               const struct stat *status, long size, const char *link);

// Queues the next bytes of a descriptor as blocks, the last one filled up with
// zeros.
//   edge      what the descriptor does not deliver is zeros, and reported
//             under the name "tarout"
void tarcontents(int descriptor, long size);

// Queues one block of 512 bytes. Every 20th writes the record.
void tarwrite(const char *block);

// The target of a link entry: what a symbolic link holds, or the path that was
// read first of a file with several links. The path becomes that one when the
// file is new.
//   result    null for what is not a link entry, and for a symbolic link that
//             cannot be read
//   owner     library, until the next call or tardone()
const char *tarlnname(const char *path, const struct stat *status);

TOVAN_END_C

#endif
