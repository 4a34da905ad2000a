// private_linktab.h (private): files that have several names.
// Builds on: private_hash.h.
//
// An archive names a file's first entry when it meets the file again. The
// table finds it in one step, however many files it holds.
#ifndef TOVAN_PRIVATE_LINKTAB_H
#define TOVAN_PRIVATE_LINKTAB_H

#include "private_hash.h"

#include <stdint.h>
#include <sys/types.h>

namespace [[gnu::visibility("hidden")]] tovan {

struct linked_file {
    dev_t device;
    ino_t inode;
    union {
        char *path;       // of its first entry
        unsigned number;  // that stands for the inode
    };
};

// A zeroed record is an empty table.
struct link_table {
    linked_file *files;
    uint32_t count;
    uint32_t room;
    hash_table index;
};

// The file with these numbers, or null.
linked_file *find_linked(const link_table *table, dev_t device, ino_t inode);

// Adds a file that is not in the table yet.
//   result    its record, to be filled in; stale after the next addition
linked_file *add_linked(link_table *table, dev_t device, ino_t inode);

// Empties the table and releases its memory, the paths excepted.
void clear_links(link_table *table);

}  // namespace tovan

#endif
