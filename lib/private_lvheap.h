// private_lvheap.h (private): a variable heap in memory.
// Builds on: private_hash.h, lvheap.h.
//
// Variables and traits are two heaps of one format (docs/formats/heap.md).
// A heap is read, then indexed; only what the index accepted is ever looked
// at, so that the loops below need no tests of their own.
// Order: read_heap, index_heap, look-ups, free_heap or the next read_heap.
// Errors: fatal, with the heap's name in front.
#ifndef TOVAN_PRIVATE_LVHEAP_H
#define TOVAN_PRIVATE_LVHEAP_H

#include "lvheap.h"
#include "private_hash.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace [[gnu::visibility("hidden")]] tovan {

constexpr int heap_buckets = 256;
constexpr int heap_export_flag = 0x02;  // on disk: do not change

// An entry as it lies in the file: see the accessors below.
using heap_entry = unsigned char;

// A name with a subscript, in the list of the names that share its text
// before the first "[".
struct heap_subscript {
    uint32_t position;  // of its entry, in 8-byte units
    uint32_t next;      // the index of the next one; 0 at the end
};

// Zeroed: nothing is loaded.
struct variable_heap {
    unsigned char *bytes;  // what follows the header in the file
    uint32_t size;
    uint32_t heads[heap_buckets];
    uint32_t generation_seek;
    uint32_t generation_lines;
    hash_table names;            // whole names; null slots: not indexed yet
    hash_table bases;            // texts before a "["
    heap_subscript *subscripts;  // from 1 on: what `bases` leads to
    bool misplaced;              // some entry hangs in a foreign chain
};

// Reads header and heap from a descriptor, which stays open.
//   name      in messages: the file, or the command behind a pipe
//   fails     "%s: could not read header", "%s: header magic not valid",
//             "%s: could not read kivs heap"
//   edge      what the heap held before is released; bytes behind the heap
//             are left unread
void read_heap(variable_heap *heap, int descriptor, const char *name);

// Checks a heap that was read, each entry once, and makes its indexes.
//   fails     "%s: kivs heap is damaged": an entry or a value outside, a name
//             or a value without end, an entry met twice
void index_heap(variable_heap *heap, const char *name);

// Back to "nothing is loaded".
void free_heap(variable_heap *heap);

inline bool is_loaded(const variable_heap *heap) {
    return heap->names.slots != nullptr;
}

// The entry that a walk of the name's own chain meets first; null when none.
const heap_entry *find_entry(const variable_heap *heap, const char *name,
                             size_t length);

inline const heap_entry *find_entry(const variable_heap *heap,
                                    const char *name) {
    return find_entry(heap, name, strlen(name));
}

// The names with a subscript whose text before the first "[" has these bytes,
// in the order of a scan. Meaningless for a heap with misplaced entries.
//   result    an index into `subscripts`; 0 when there are none
uint32_t first_subscript(const variable_heap *heap, const char *base,
                         size_t length);

inline const char *entry_name(const heap_entry *entry) {
    return reinterpret_cast<const char *>(entry + 7);
}

inline const char *entry_value(const heap_entry *entry) {
    return entry_name(entry) + (entry[4] << 8 | entry[5]);
}

// The flags byte, sign-extended.
inline int entry_flags(const heap_entry *entry) {
    return static_cast<signed char>(entry[6]);
}

inline const heap_entry *entry_at(const variable_heap *heap,
                                  uint32_t position) {
    return heap->bytes + size_t{position} * 8;
}

// The position of the next entry of the chain; 0 at its end.
inline uint32_t next_position(const heap_entry *entry) {
    return uint32_t{entry[0]} << 24 | uint32_t{entry[1]} << 16 |
           uint32_t{entry[2]} << 8 | entry[3];
}

// Calls visit(bucket, entry) for every entry: buckets in order, each chain
// from its head.
template <typename Visit>
void for_each_entry(const variable_heap *heap, Visit visit) {
    for (int bucket = 0; bucket < heap_buckets; ++bucket) {
        uint32_t position = heap->heads[bucket];
        while (position != 0) {
            const heap_entry *entry = entry_at(heap, position);
            visit(bucket, entry);
            position = next_position(entry);
        }
    }
}

}  // namespace tovan

#endif
