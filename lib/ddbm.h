// ddbm.h: the page-hashed database.
// Builds on: strutil.h.
//
// Pairs of keys and values, any bytes, in two files: <base>.dir says which
// pages were split, <base>.pag holds the pages. docs/formats/database.md has
// their bytes, which are the same on every machine.
// Always: a look-up or a change costs at most one page read and one page
// write, and a split two page writes and one of the directory. The directory
// is read once and held.
// Order: dbm_open or dbm_prep, any calls, dbm_close. One handle at a time may
// change a database; handles that were open before see the directory as it was
// when they read it.
// Errors: -1, a null handle or the null item, with errno; failures of input
// and output also leave bit 1 in `flags`. A damaged page is refused (EIO),
// never read out of bounds, and a file that somebody cuts short is one with
// empty pages. Only the end of ten splits in a row prints something.
// Failure model: whenever the process dies, kill -9 included, no pair whose
// store returned 0 is missing or damaged, as long as pages have 1, 2 or 4 KB:
// others do not lie in one page of the system, and may be written in part.
// After a crash of the system nothing is promised: nothing is synchronised.
#ifndef TOVAN_DDBM_H
#define TOVAN_DDBM_H

#include "attrs.h"

#include <stdint.h>

TOVAN_BEGIN_C

// An item: so many bytes. The null item, a null pointer and 0, is what
// functions give that find nothing.
typedef struct dbm_datum {
    char *data;
    int length;
} dbm_datum;

// An open database. Fields are for reading only.
typedef struct dbm_handle {
    int dir_fd;
    int pag_fd;
    int flags;             // bit 0: read-only; bit 1: I/O has failed, for good
    int32_t dir_bits;      // directory bits that the file can hold
    int32_t cur_bit;       // directory bit of the page last located
    uint32_t hash_mask;    // what chose that page from the hash: 2^depth - 1
    int32_t iter_page;     // where the iteration is: page,
    int iter_key;          // and key in it, from 1
    int32_t dir_block_no;  // directory block in `dir_block`, -1: none
    unsigned char dir_block[4096];
    unsigned char *split_new;   // two pages for splits,
    unsigned char *split_copy;  // null until the first one
    int32_t page_no;            // page in `page`, -1: none
    int32_t page_size;          // in bytes
    unsigned char *page;        // just behind this record, in the same block
} dbm_handle;

// Opens <base>.dir and <base>.pag; dbm_prep() with pages of 1 KB.
//   fails     null: EINVAL (base null or empty), ENOMEM, as dbm_prep()
dbm_handle *dbm_open(const char *base, int flags, int mode);

// Opens a database by the names of its files.
//   page_kb   1 to 255; only looked at with O_CREAT
//   flags     as for open(2), for both files; O_WRONLY is taken as O_RDWR,
//             O_APPEND is ignored. Descriptors are close-on-exec
//   result    a handle
//   owner     caller (dbm_close)
//   fails     null: EINVAL (a null name; a page size out of range, asked for
//             or found; an empty directory file), ENOMEM, or as the system
//             says. Nothing stays open, with one exception: the directory
//             file, when `page_kb` is refused
//   edge      O_CREAT on an existing database sets its page size and takes
//             its directory as empty until the first split: pages that were
//             split off are not reached. Create new files, or leave it out
dbm_handle *dbm_prep(const char *dir, const char *pag, int page_kb, int flags,
                     int mode);

// Closes both files and releases the handle with all that belongs to it.
//   edge      null: errno EINVAL
void dbm_close(dbm_handle *db);

// The value of a key.
//   owner     handle, until the next call with it
//   fails     the null item: EINVAL (no handle, no key, length below 1); with
//             bit 1 of `flags`, EIO for a damaged page, or as the system says
//   edge      a key that is not there: the null item, errno as it was. A value
//             without bytes has a pointer, and the length 0
dbm_datum dbm_fetch(dbm_handle *db, dbm_datum key);

// Stores a pair.
//   key, value  not inside `page`
//   mode      1 replaces the value of a key that is there, anything else keeps
//             it
//   result    0 stored; 1 kept what was there
//   fails     -1, nothing changed: EINVAL (no handle; no key or length below
//             1; a negative length; no value but a length; key and value
//             longer together than the page size less 6; an offset that would
//             pass 65535, which pages above 64 KB can hold only behind long
//             first keys), EPERM (opened read-only). -1 with bit 1 of `flags`:
//             EIO for a damaged page, ENOMEM, ENOSPC after ten splits that made
//             no room (said on standard error), EFBIG when no page number is
//             left, or as the system says; other pairs are where they were,
//             and the key has its old value or, after a failed write, the new
//   edge      a replaced pair goes behind the others of its page
int dbm_store(dbm_handle *db, dbm_datum key, dbm_datum value, int mode);

// Removes a pair.
//   result    0
//   fails     -1 as dbm_store(); -1 alone: the key is not there
int dbm_delete(dbm_handle *db, dbm_datum key);

// The first key, and the next one: page by page as in the file, and in each
// page in the order of storing. Fetching between two steps does no harm;
// storing and deleting do.
//   owner     handle, until the next call with it
//   result    at the end the null item, with bit 1 of `flags`
//   fails     as at the end; errno tells which if it was 0 before. EINVAL: no
//             handle
//   edge      holes in the file cost nothing; up to 64 KB are read ahead
dbm_datum dbm_firstkey(dbm_handle *db);
dbm_datum dbm_nextkey(dbm_handle *db);

// The hash of a key: h = c + 65599 h for each byte c, which counts as signed.
//   edge      0 for a length below 1
uint32_t dbm_hash(const char *bytes, int length);

// dbm_fetch() with a value whose address is a multiple of 4.
//   owner     handle, or library: until the next call of either
//   fails     as dbm_fetch(); the null item and ENOMEM
dbm_datum dbm_alfetch(dbm_handle *db, dbm_datum key);

TOVAN_END_C

#endif
