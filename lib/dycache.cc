// dycache.cc: permanent copies of strings, packed into chunks.
//
// A string goes to the first chunk, in the order in which the chunks were
// made, that has more room than it needs; else to a new one. The chunks are
// the leaves of a tree in which every node holds the larger room of its two
// children, so that the first chunk with room is found by walking down from
// the root, to the left whenever there is room enough. Chunks with 3, 9 and 5
// bytes of room, looked at for a string that needs 4:
//
//                [1] 9
//          [2] 9       [3] 5
//       [4] 3 [5] 9 [6] 5 [7] 0
//
// Node 1 has room; node 2 has, and lies left of node 3; node 4 has not; so
// node 5 it is, the second chunk.
#include "dystr.h"

#include "chkalloc.h"
#include "ident.h"

#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

namespace {

constexpr size_t chunk_size = 1016;
constexpr size_t first_leaves = 16;

using room = uint16_t;
static_assert(chunk_size <= UINT16_MAX);

// Where the strings are. Grown by dycache(), never released.
struct string_cache {
    size_t leaves;  // a power of 2, or 0 before the first string
    size_t chunks;
    room *tree;    // node i has the children 2i and 2i + 1; the root is 1
    char **frees;  // the first free byte of each chunk
};
constinit string_cache cache{};

void update_node(size_t node) {
    room left = cache.tree[2 * node];
    room right = cache.tree[2 * node + 1];
    cache.tree[node] = left > right ? left : right;
}

size_t room_of(size_t chunk) {
    return cache.tree[cache.leaves + chunk];
}

void set_room(size_t chunk, size_t bytes) {
    size_t node = cache.leaves + chunk;
    cache.tree[node] = static_cast<room>(bytes);
    while (node > 1)
        update_node(node /= 2);
}

void double_leaves() {
    size_t leaves = cache.leaves != 0 ? 2 * cache.leaves : first_leaves;
    size_t size = 2 * leaves * sizeof(room);
    room *tree = static_cast<room *>(memset(chkalloc(size), 0, size));
    for (size_t i = 0; i < cache.chunks; i++)
        tree[leaves + i] = cache.tree[cache.leaves + i];
    free(cache.tree);
    cache.tree = tree;
    cache.leaves = leaves;
    for (size_t node = leaves - 1; node > 0; node--)
        update_node(node);
    cache.frees = static_cast<char **>(
        chkrealloc(cache.frees, leaves * sizeof *cache.frees));
}

// The first chunk with more room than `size`.
size_t first_fit(size_t size) {
    size_t node = 1;
    while (node < cache.leaves) {
        node *= 2;
        if (cache.tree[node] <= size) node++;
    }
    return node - cache.leaves;
}

size_t add_chunk() {
    if (cache.chunks == cache.leaves) double_leaves();
    size_t chunk = cache.chunks++;
    cache.frees[chunk] = static_cast<char *>(chkalloc(chunk_size));
    set_room(chunk, chunk_size);
    return chunk;
}

}  // namespace

// Deliberate: a chunk with exactly the room that a string needs is passed
// over, unless it is a new one (test dycache_fills_no_chunk_to_its_last_byte).
char *dycache(const char *bytes, int n) {
    size_t length = n < 0 ? strlen(bytes) : static_cast<size_t>(n);
    size_t size = length + 1;
    // A chunk of its own would never have room again.
    if (size > chunk_size) return savenstr(bytes, length);
    bool fits = cache.leaves != 0 && cache.tree[1] > size;
    size_t chunk = fits ? first_fit(size) : add_chunk();
    char *copy = cache.frees[chunk];
    if (length != 0) memcpy(copy, bytes, length);
    copy[length] = '\0';
    cache.frees[chunk] += size;
    set_room(chunk, room_of(chunk) - size);
    return copy;
}

TOVAN_IDENT(dycache, "8.4", "26/11/21")
