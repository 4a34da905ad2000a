// private_ddbm.h (private): what the sources of the database share.
// Builds on: ddbm.h.
#ifndef TOVAN_PRIVATE_DDBM_H
#define TOVAN_PRIVATE_DDBM_H

#include "ddbm.h"

#include <stddef.h>
#include <stdint.h>

namespace [[gnu::visibility("hidden")]] tovan {

// Bits of `flags`.
constexpr int opened_read_only = 1;
constexpr int io_error = 2;

// The mode of dbm_store() that replaces.
constexpr int store_replaces = 1;

constexpr dbm_datum null_item = {nullptr, 0};

// ---- the handle --------------------------------------------------------

// The directory is held in chunks, each from its first use on.
constexpr size_t directory_chunk = size_t{1} << 20;

// Bits are numbered up to 2^31-2, so the last byte is number 2^28.
constexpr size_t directory_chunks = (size_t{1} << 28) / directory_chunk + 1;

// Pages that the iteration has read beyond the one it is at.
struct read_ahead {
    unsigned char *room;  // null until needed
    int64_t first;        // page number
    int64_t count;        // pages held from there
    int64_t data_end;     // where the data that is being read ends in the file
};

// What lies behind the published record and its page, in the same block.
struct handle_rest {
    unsigned char *directory[directory_chunks];
    read_ahead ahead;
    unsigned char *before;  // a page as it was before a pair was removed
};

inline handle_rest *rest_of(dbm_handle *db) {
    return reinterpret_cast<handle_rest *>(db->page + db->page_size);
}

inline bool is_key(dbm_datum item) {
    return item.data != nullptr && item.length > 0;
}

// What was read ahead, and where, is worth nothing any more.
inline void forget_ahead(dbm_handle *db) {
    rest_of(db)->ahead.count = 0;
    rest_of(db)->ahead.data_end = 0;
}

// The failure of a change: bit 1 of `flags`.
//   result    -1
inline int io_failed(dbm_handle *db) {
    db->flags |= io_error;
    return -1;
}

// ---- the directory -----------------------------------------------------

// Walks from the root to the page of a hash: `cur_bit`, `hash_mask`.
//   fails     false with errno: a bit could not be read, and the walk ended
//             there as if it were clear
bool find_leaf(dbm_handle *db, uint32_t hash);

// Sets the bit `cur_bit`, in the file too; `dir_bits` grows with it.
//   fails     false with errno; what the file holds then is read again
bool set_leaf_bit(dbm_handle *db);

// Where the walk goes from a bit.
inline int32_t child_of(int32_t bit, bool second) {
    uint32_t child = 2 * static_cast<uint32_t>(bit) + (second ? 2 : 1);
    // Below depth 30 there are pages, and no bits that could be set.
    return child > INT32_MAX ? INT32_MAX : static_cast<int32_t>(child);
}

void release_directory(dbm_handle *db);

// ---- pages in the file -------------------------------------------------

// Brings a page into the buffer; one that the file does not hold is empty.
//   fails     false with errno, the buffer as it was; EIO: not a valid page
bool load_page(dbm_handle *db, int32_t page);

// Reads a page into the buffer even if it is there.
//   fails     false with errno, the buffer is worth nothing
bool read_page(dbm_handle *db, int32_t page);

// Writes a page; what was read ahead is worth nothing then.
//   fails     false with errno: the file may hold the beginning of it
bool write_page(dbm_handle *db, int32_t page, const unsigned char *bytes);

// The buffer holds no page any more.
inline void forget_page(dbm_handle *db) {
    db->page_no = -1;
}

// ---- pairs in a page ---------------------------------------------------

// A page in memory.
struct page {
    unsigned char *bytes;
    int size;
};

inline page current_page(dbm_handle *db) {
    return {db->page, db->page_size};
}

// The largest offset that an entry can hold.
constexpr int largest_offset = 65535;

// What two entries and the count take of an empty page.
constexpr int empty_overhead = 6;

// Number of entries: two a pair.
inline int entry_count(page at) {
    return at.bytes[0] << 8 | at.bytes[1];
}

// Entry i, from 1; entry 0 stands for the end of the page.
inline int entry(page at, int i) {
    if (i == 0) return at.size;
    return at.bytes[2 * i] << 8 | at.bytes[2 * i + 1];
}

// Whether the entries lie in the page and in order.
bool is_valid(page at);

// The pair of a key: the number of its first entry; 0: none.
int find_pair(page at, dbm_datum key);

// Key and value of the pair whose first entry is number i.
inline dbm_datum key_at(page at, int i) {
    int start = entry(at, i);
    return {reinterpret_cast<char *>(at.bytes + start),
            entry(at, i - 1) - start};
}
inline dbm_datum value_at(page at, int i) {
    return key_at(at, i + 1);
}

// Whether a pair of `need` bytes fits once pair `old` (0: none) is gone.
bool fits(page at, int old, int need);

// Whether entries can hold all offsets after the pair `old` (0: none) is
// removed, and those of a pair with this key after it is put there instead.
bool can_remove(page at, int old);
bool can_put(page at, int old, dbm_datum key);

// Removes the pair whose first entry is number i.
void remove_pair(page at, int i);

// Puts a pair that fits behind the others.
void put_pair(page at, dbm_datum key, dbm_datum value);

}  // namespace tovan

#endif
