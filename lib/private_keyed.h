// private_keyed.h (private): what the keyed databases share.
// Builds on: ddbm.h.
#ifndef TOVAN_PRIVATE_KEYED_H
#define TOVAN_PRIVATE_KEYED_H

#include "ddbm.h"

#include <stddef.h>

namespace [[gnu::visibility("hidden")]] tovan {

constexpr int close_mode = 0;  // of kdbminit() and ldbminit()
constexpr int anew_mode = 1;
constexpr int update_mode = 2;  // others: for reading

constexpr size_t most_record = 1024;  // bytes of a key and what it collects

// Opens the two files of a database, which are made anew where the mode asks
// for it.
//   page_kb   the page size of new files
//   is_new    where it goes whether they are new
//   result    null, or the message
const char *open_pages(const char *name, int mode, unsigned char page_kb,
                       dbm_handle **handle, bool *is_new);

// NAME and a suffix.
//   owner     caller (free)
char *suffixed(const char *name, const char *suffix);

// free() that leaves errno alone.
void release(void *block);

bool is_read_only(const dbm_handle *handle);

// A string with its NUL as a key or a value. One of 2 GiB or more is cut: the
// database refuses it all the same.
dbm_datum item_of(const char *text);

// Looks up what is to be extended.
//   known     where the value goes, or the null item when there is none
//   result    false: it cannot be known whether there is one
bool fetch_known(dbm_handle *handle, dbm_datum key, dbm_datum *known);

// Whether a value of so many bytes is too much for the key; says so.
//   printed   where what fprintf() returned goes
bool has_too_many(const char *key, size_t length, int *printed);

// As dbm_store() in place of what is there.
int replace_value(dbm_handle *handle, dbm_datum key, char *bytes,
                  size_t length);

}  // namespace tovan

#endif
