// ldbminit.h: lists of lines under names, on disk.
// Builds on: ddbm.h, dystr.h.
//
// A line index: the text file NAME.data holds the lines, a database of the
// two files NAME.dir and NAME.pag (ddbm.h) says for each key, a string, where
// its lines start. The files are drawn in docs/formats/keyed-database.md.
// Always: a line is in its file before its place is in the database: what
// ldbmadd() returned 0 for is found again, even if the process dies.
// Order: zero the record; ldbminit to open; add and find; ldbminit with mode
// 0 to close.
// Errors: opening gives a message, adding 0 or another number; what a caller
// did wrong is said on standard error. errno is that of the call that failed.
#ifndef TOVAN_LDBMINIT_H
#define TOVAN_LDBMINIT_H

#include "attrs.h"
#include "ddbm.h"

#include <stdio.h>

TOVAN_BEGIN_C

typedef struct ldbm_db {
    dbm_handle *handle;  // null: closed
    char *name;          // of the files, without their suffixes
    FILE *data;
    void (*callback)(const char *key, const char *line);
} ldbm_db;

// Opens or closes a line index. One that is open is closed first.
//   db        zeroed before its first use
//   name      of the files, without their suffixes; not looked at to close
//   mode      0 closes; 1 makes the files anew, with pages of 1024 bytes; 2
//             opens for updates, and makes them anew when the ".dir" file is
//             not there or may not be written; others open for reading
//   callback  gets the lines that ldbmfind() reads; null: they are counted
//   result    null, or a message: "Cannot create new '.dir' file", "Cannot
//             create new '.pag' file", "dbminit failed", "open of data file
//             failed"; the index is closed then
//   edge      files that were there are emptied, even when opening then fails
const char *ldbminit(ldbm_db *db, const char *name, int mode,
                     void (*callback)(const char *key, const char *line));

// Adds a line to those of a key.
//   value     the line, without its newline
//   result    0; -1 with errno when it could not be stored, also when the key
//             and its places do not fit a page (6 bytes of it are taken), or
//             when the data file has 4 GiB (EFBIG); what fprintf(3) returned
//             for a message
//   fails     on standard error: "database not updatable" (closed, or open
//             for reading), "KEY: too many entries" when the key with its NUL
//             and 4 bytes for each line are more than 1024 bytes
//   edge      the line is written first, and stays in the data file whatever
//             happens then. Of a value with newlines only the first line is
//             found again
int ldbmadd(ldbm_db *db, const char *key, const char *value);

// Reads the lines of a key, in the order in which they were added, and hands
// them to the callback, each with the newline that ends it.
//   result    how many there were
//   fails     "database not open" on standard error, 0
//   edge      a line comes cut to its first 511 characters; one that is not
//             in the data file is left out. The callback may use the index,
//             but not close it
int ldbmfind(ldbm_db *db, const char *key);

TOVAN_END_C

#endif
