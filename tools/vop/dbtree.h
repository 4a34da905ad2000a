// dbtree.h: the directory of a page database as it is, whatever it holds
// (docs/formats/keyed-database.md).
#ifndef TOVAN_TOOLS_DBTREE_H
#define TOVAN_TOOLS_DBTREE_H

#include "vop/dbpages.h"

#include <stdint.h>

namespace vop {

// The directory: a tree of bits, numbered from the root, 0; the nodes below
// bit b are 2b + 1 and 2b + 2. A set bit stands for a page that was split.
constexpr int64_t directory_block = 4096;
constexpr int64_t held_blocks = 64;  // the upper parts of a large tree

struct directory {
    const page_files *files;
    int64_t bits;
    int64_t block_numbers[held_blocks];  // -1: none
    unsigned char blocks[held_blocks][directory_block];
};

// On the heap (free).
directory *open_directory(const page_files *files);

bool is_set(directory *tree, int64_t bit);

// The next bit from a number on that is set, or -1.
int64_t next_set(directory *tree, int64_t bit);

// The page of a hash.
int64_t page_of(directory *tree, uint32_t hash);

// How many bits lie above one, and the page that was split where it stands.
int depth_of(int64_t bit);
int64_t split_page(int64_t bit);

}  // namespace vop

#endif
