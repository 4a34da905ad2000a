// kdbminit.h: texts under names, on disk.
// Builds on: ddbm.h, dystr.h.
//
// A database of the two files NAME.dir and NAME.pag (ddbm.h) whose keys and
// values are strings, kept with their NULs. One key has one value; values may
// be collected in it, with a separator between them. The files are drawn in
// docs/formats/keyed-database.md.
// Order: zero the record; kdbminit to open; add and find; kdbminit with mode
// 0 to close.
// Errors: opening gives a message, adding 0 or another number; what a caller
// did wrong is said on standard error. errno is that of the call that failed.
#ifndef TOVAN_KDBMINIT_H
#define TOVAN_KDBMINIT_H

#include "attrs.h"
#include "ddbm.h"

TOVAN_BEGIN_C

typedef struct kdbm_db {
    dbm_handle *handle;  // null: closed
    char *path;          // of the ".dir" file
} kdbm_db;

// Opens or closes a database. One that is open is closed first.
//   db        zeroed before its first use
//   name      of the files, without their suffixes; not looked at to close
//   mode      0 closes; 1 makes the files anew, with pages of 4096 bytes; 2
//             opens for updates, and makes them anew when the ".dir" file is
//             not there or may not be written; others open for reading
//   result    null, or a message: "Cannot create new '.dir' file", "Cannot
//             create new '.pag' file", "dbminit failed"; the database is
//             closed then
//   edge      files that were there are emptied, even when opening then fails
const char *kdbminit(kdbm_db *db, const char *name, int mode);

// Gives a text to a key, or adds it to the text that is there.
//   value     null removes the key; a text that kdbmfind() gave is to be
//             copied first
//   separator the character that comes between the old text and this one; 0
//             replaces the old text
//   result    0; -1 with errno when it could not be stored, or when there is
//             nothing to be removed; what fprintf(3) returned for a message
//   fails     on standard error: "database not opened", "database not
//             updatable" (open for reading), "KEY: too many entries" when
//             key, old text and new text, each with its NUL, are more than
//             1024 bytes; nothing has changed then
int kdbmadd(kdbm_db *db, const char *key, const char *value, int separator);

// Looks a text up.
//   result    the text with its length, the NUL included; null when the key
//             is not there
//   owner     library until the next call for any database; the text itself
//             until the next call for this one
//   fails     "database not open" on standard error, null
//   edge      in files of other origin a text may be without its NUL
dbm_datum *kdbmfind(kdbm_db *db, const char *key);

TOVAN_END_C

#endif
