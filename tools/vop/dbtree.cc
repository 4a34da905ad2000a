// dbtree.cc: the directory of a page database as it is.
#include "vop/dbtree.h"

#include <stdlib.h>
#include <tovan/chkalloc.h>

using vop::page_files;

namespace {

// The byte of the directory file, through the blocks that are held.
unsigned char directory_byte(vop::directory *tree, int64_t place) {
    int64_t block = place / vop::directory_block;
    int64_t slot = block % vop::held_blocks;
    if (tree->block_numbers[slot] != block) {
        vop::read_range(tree->files->dir, tree->files->dir_path,
                        block * vop::directory_block, tree->blocks[slot],
                        vop::directory_block);
        tree->block_numbers[slot] = block;
    }
    return tree->blocks[slot][place % vop::directory_block];
}

// Where the first byte from a place on is that is not zero; the file's end
// when there is none.
int64_t next_byte(vop::directory *tree, int64_t place) {
    const page_files *files = tree->files;
    for (; place < files->dir_size; place++) {
        if (place % vop::directory_block == 0)
            place = vop::next_data(files->dir, place, files->dir_size);
        if (place < files->dir_size && directory_byte(tree, place) != 0)
            return place;
    }
    return files->dir_size;
}

int64_t byte_of(int64_t bit) {
    return bit / 8 + 1;
}

}  // namespace

vop::directory *vop::open_directory(const page_files *files) {
    constexpr int64_t most_bits = INT32_MAX;
    auto *tree = static_cast<directory *>(chkalloc(sizeof(directory)));
    tree->files = files;
    tree->bits = files->dir_size > 0 ? (files->dir_size - 1) * 8 : 0;
    if (tree->bits > most_bits) tree->bits = most_bits;
    for (int64_t &number : tree->block_numbers)
        number = -1;
    return tree;
}

bool vop::is_set(directory *tree, int64_t bit) {
    if (bit >= tree->bits) return false;
    return (directory_byte(tree, byte_of(bit)) >> (bit % 8) & 1) != 0;
}

int64_t vop::next_set(directory *tree, int64_t bit) {
    for (; bit < tree->bits; bit++) {
        if (bit % 8 == 0) bit = (next_byte(tree, byte_of(bit)) - 1) * 8;
        if (is_set(tree, bit)) return bit;
    }
    return -1;
}

int64_t vop::page_of(directory *tree, uint32_t hash) {
    int64_t bit = 0;
    int depth = 0;
    while (is_set(tree, bit)) {
        bit = 2 * bit + 1 + (hash >> depth & 1);
        depth++;
    }
    return hash & ((int64_t{1} << depth) - 1);
}

int vop::depth_of(int64_t bit) {
    return 63 - __builtin_clzll(static_cast<unsigned long long>(bit) + 1);
}

// The number of a bit and 1, in binary, is a 1 and then the way down to it;
// the first step is the lowest digit of the page's number.
int64_t vop::split_page(int64_t bit) {
    int64_t page = 0;
    for (int64_t way = bit + 1; way > 1; way >>= 1)
        page = page << 1 | (way & 1);
    return page;
}
