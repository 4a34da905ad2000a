// ddbmdir.cc: the directory of a database: which pages were split.
//
// Bits are a binary tree, numbered level by level: 0 is the root, the children
// of d are 2d+1 and 2d+2. A set bit means that the page reached there was
// split; the next bit of the hash, the lowest first, says where to go on:
//
//     bit 0 set          hash ...0   bit 1 clear: page 0, one hash bit used
//                        hash ...1   bit 2 set
//                           hash ..01   bit 5 clear: page 1 (01)
//                           hash ..11   bit 6 clear: page 3 (11)
//
// The file is read and written in blocks of 4096 bytes. It is held here in
// larger chunks, so that no block is read twice; `dir_block` shows the block
// that was used last.
#include "private_ddbm.h"

#include "ident.h"
#include "private_io.h"

#include <errno.h>
#include <string.h>
#include <sys/mman.h>

namespace {

using tovan::directory_chunk;

constexpr size_t block_size = 4096;       // on disk: do not change
constexpr int32_t block_bits = 4096 * 8;  // by which `dir_bits` grows
static_assert(sizeof(dbm_handle::dir_block) == block_size);
static_assert(directory_chunk % block_size == 0);

// The byte of a bit in the file; byte 0 is the page size.
size_t byte_of(uint32_t bit) {
    return size_t{bit} / 8 + 1;
}

unsigned char mask_of(uint32_t bit) {
    return static_cast<unsigned char>(1 << bit % 8);
}

size_t block_of(uint32_t bit) {
    return byte_of(bit) / block_size;
}

void drop_chunk(unsigned char **chunk) {
    if (*chunk != nullptr) munmap(*chunk, directory_chunk);
    *chunk = nullptr;
}

// Takes a chunk up from the file. Memory straight from the system is zero
// behind the end of a file, and costs nothing there.
bool read_chunk(dbm_handle *db, unsigned char **chunk, size_t start) {
    void *room = mmap(nullptr, directory_chunk, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (room == MAP_FAILED) return false;
    *chunk = static_cast<unsigned char *>(room);
    ssize_t got = tovan::read_at(db->dir_fd, room, directory_chunk,
                                 static_cast<off_t>(start));
    if (got != -1) return true;
    int reason = errno;
    drop_chunk(chunk);
    errno = reason;
    return false;
}

// The held byte of a bit; null with errno when it cannot be read.
unsigned char *held_byte(dbm_handle *db, uint32_t bit) {
    size_t at = byte_of(bit);
    size_t number = at / directory_chunk;
    unsigned char **chunk = &tovan::rest_of(db)->directory[number];
    if (*chunk == nullptr && !read_chunk(db, chunk, number * directory_chunk))
        return nullptr;
    return *chunk + at % directory_chunk;
}

// Shows the block of a bit that is held.
void show_block(dbm_handle *db, uint32_t bit) {
    auto number = static_cast<int32_t>(block_of(bit));
    if (number == db->dir_block_no) return;
    unsigned char *byte = held_byte(db, bit);
    memcpy(db->dir_block, byte - byte_of(bit) % block_size, block_size);
    db->dir_block_no = number;
}

// After a failed write nobody knows what the file holds of a block.
void forget_chunk(dbm_handle *db, uint32_t bit) {
    int reason = errno;
    drop_chunk(&tovan::rest_of(db)->directory[byte_of(bit) / directory_chunk]);
    db->dir_block_no = -1;
    errno = reason;
}

}  // namespace

bool tovan::find_leaf(dbm_handle *db, uint32_t hash) {
    auto bits = static_cast<uint32_t>(db->dir_bits);
    uint32_t bit = 0;
    uint32_t last_read = bits;
    int depth = 0;
    bool known = true;
    while (bit < bits) {
        const unsigned char *byte = held_byte(db, bit);
        known = byte != nullptr;
        if (!known) break;
        last_read = bit;
        if ((*byte & mask_of(bit)) == 0) break;
        bit = 2 * bit + 1 + (hash >> depth & 1);
        ++depth;
    }
    // Numbers end at depth 30, so depth is at most 31.
    db->cur_bit = bit > INT32_MAX ? INT32_MAX : static_cast<int32_t>(bit);
    db->hash_mask = (uint32_t{1} << depth) - 1;
    if (last_read < bits) show_block(db, last_read);
    return known;
}

bool tovan::set_leaf_bit(dbm_handle *db) {
    auto bit = static_cast<uint32_t>(db->cur_bit);
    unsigned char *byte = held_byte(db, bit);
    if (byte == nullptr) return false;
    *byte |= mask_of(bit);
    // Chosen: as often as it takes. Deep in the tree one step does not reach
    // the bit, and the walk would stop above what was stored below it.
    while (db->cur_bit >= db->dir_bits) {
        db->dir_bits = db->dir_bits > INT32_MAX - block_bits
                           ? INT32_MAX
                           : db->dir_bits + block_bits;
    }
    db->dir_block_no = -1;
    show_block(db, bit);
    auto start = static_cast<off_t>(block_of(bit) * block_size);
    if (write_at(db->dir_fd, db->dir_block, block_size, start) == 0)
        return true;
    forget_chunk(db, bit);
    return false;
}

void tovan::release_directory(dbm_handle *db) {
    for (unsigned char *&chunk : rest_of(db)->directory)
        drop_chunk(&chunk);
}

TOVAN_IDENT(ddbmdir, "8.4", "26/11/22")
