// lvheap.cc: heaps are read and checked; docs/formats/heap.md is the format.
#include "lvheap.h"

#include "chkalloc.h"
#include "errexit.h"
#include "ident.h"
#include "private_hash.h"
#include "private_io.h"
#include "private_lvindex.h"
#include "strutil.h"

#include <stdlib.h>
#include <string.h>

using tovan::found_name;
using tovan::heap_entry;
using tovan::variable_heap;

namespace {

// on disk: do not change
constexpr char magic[] = "LclVars3\n";  // its NUL belongs to it
enum header_offset : size_t {
    generation_seek_at = sizeof magic + 2,
    generation_lines_at = generation_seek_at + 4,
    size_at = generation_lines_at + 4,
    heap_address_at = size_at + 4,
    heads_at = heap_address_at + 4,
    header_size = heads_at + 4 * tovan::heap_buckets,
};
static_assert(sizeof magic == 10 && heads_at == 28 && header_size == 1052);

// What is asked for on the word of a header alone; from there on the memory
// doubles with what has really arrived.
constexpr size_t first_piece = size_t{1} << 20;

uint32_t number_at(const unsigned char *bytes) {
    return tovan::next_position(bytes);  // big-endian as all of the format
}

// The heap's bytes; null when fewer than `size` arrive.
unsigned char *read_pieces(int descriptor, size_t size) {
    size_t room = size < first_piece ? size : first_piece;
    size_t filled = 0;
    auto *bytes = static_cast<unsigned char *>(chkalloc(room > 0 ? room : 1));
    while (true) {
        ssize_t wanted = static_cast<ssize_t>(room - filled);
        ssize_t got =
            tovan::read_full(descriptor, bytes + filled, room - filled);
        if (got != wanted) {
            free(bytes);
            return nullptr;
        }
        if (room == size) return bytes;
        filled = room;
        room = size / 2 < room ? size : room * 2;
        bytes = static_cast<unsigned char *>(chkrealloc(bytes, room));
    }
}

// What the check of one heap needs beside the heap.
struct check {
    variable_heap *heap;
    size_t text_end;     // a text that starts before it ends inside
    size_t names_left;   // bytes that further names may have
    unsigned char *met;  // one bit for each position
    found_name *names;   // in their own chains, in order
    size_t name_count;
    uint32_t *subscripted;  // positions of the names with a "["
    size_t subscripted_count;
};

bool meets_again(check *state, uint32_t position) {
    unsigned char *byte = state->met + position / 8;
    unsigned char bit = static_cast<unsigned char>(1 << position % 8);
    bool again = (*byte & bit) != 0;
    *byte |= bit;
    return again;
}

// The length of an entry's name, or -1 when the entry is not sound.
int sound_name(check *state, uint32_t position) {
    size_t name_at = size_t{position} * 8 + 7;
    if (name_at >= state->text_end) return -1;
    if (meets_again(state, position)) return -1;
    const heap_entry *entry = tovan::entry_at(state->heap, position);
    const char *name = tovan::entry_name(entry);
    size_t distance = static_cast<size_t>(tovan::entry_value(entry) - name);
    if (name_at + distance >= state->text_end) return -1;
    auto *end = static_cast<const char *>(memchr(name, 0, distance));
    if (end == nullptr) return -1;
    size_t length = static_cast<size_t>(end - name);
    // Names that lie over each other would make this check quadratic.
    if (length > state->names_left) return -1;
    state->names_left -= length;
    return static_cast<int>(length);
}

// Takes an entry up for the indexes; one that hangs in a foreign chain is not
// found by its name.
bool accept_entry(check *state, int bucket, uint32_t position) {
    int length = sound_name(state, position);
    if (length < 0) return false;
    const char *name =
        tovan::entry_name(tovan::entry_at(state->heap, position));
    if (strnhash(name, length, lvhshtab) != bucket) {
        state->heap->misplaced = true;
        return true;
    }
    size_t n = static_cast<size_t>(length);
    state->names[state->name_count++] = {tovan::text_tag(name, n), position};
    if (memchr(name, '[', n) != nullptr) {
        state->subscripted[state->subscripted_count++] = position;
    }
    return true;
}

bool accept_chains(check *state) {
    for (int bucket = 0; bucket < tovan::heap_buckets; ++bucket) {
        uint32_t position = state->heap->heads[bucket];
        while (position != 0) {
            if (!accept_entry(state, bucket, position)) return false;
            position =
                tovan::next_position(tovan::entry_at(state->heap, position));
        }
    }
    return true;
}

size_t end_of_texts(const variable_heap *heap) {
    auto *last =
        static_cast<const unsigned char *>(memrchr(heap->bytes, 0, heap->size));
    return last != nullptr ? static_cast<size_t>(last - heap->bytes) + 1 : 0;
}

// Room for as many entries as the heap has positions; what is not needed is
// never touched.
check begin_check(variable_heap *heap) {
    size_t positions = size_t{heap->size} / 8 + 1;
    check state{};
    state.heap = heap;
    state.text_end = end_of_texts(heap);
    state.names_left = heap->size;
    state.met = static_cast<unsigned char *>(chkalloc(positions / 8 + 1));
    memset(state.met, 0, positions / 8 + 1);
    state.names =
        static_cast<found_name *>(chkalloc(positions * sizeof(found_name)));
    state.subscripted =
        static_cast<uint32_t *>(chkalloc(positions * sizeof(uint32_t)));
    return state;
}

void end_check(check *state) {
    free(state->met);
    free(state->names);
    free(state->subscripted);
}

}  // namespace

void tovan::read_heap(variable_heap *heap, int descriptor, const char *name) {
    free_heap(heap);
    unsigned char header[header_size];
    if (read_full(descriptor, header, header_size) != header_size) {
        errexit("%s: could not read header", name);
    }
    if (memcmp(header, magic, sizeof magic) != 0) {
        errexit("%s: header magic not valid", name);
    }
    heap->generation_seek = number_at(header + generation_seek_at);
    heap->generation_lines = number_at(header + generation_lines_at);
    heap->size = number_at(header + size_at);
    for (int bucket = 0; bucket < heap_buckets; ++bucket) {
        heap->heads[bucket] = number_at(header + heads_at + 4 * bucket);
    }
    heap->bytes = read_pieces(descriptor, heap->size);
    if (heap->bytes == nullptr) errexit("%s: could not read kivs heap", name);
}

void tovan::index_heap(variable_heap *heap, const char *name) {
    check state = begin_check(heap);
    bool sound = accept_chains(&state);
    if (sound) {
        index_subscripts(heap, state.subscripted, state.subscripted_count);
        index_names(heap, state.names, state.name_count);
    }
    end_check(&state);
    if (!sound) errexit("%s: kivs heap is damaged", name);
}

void tovan::free_heap(variable_heap *heap) {
    free(heap->bytes);
    free(heap->names.slots);
    free(heap->bases.slots);
    free(heap->subscripts);
    *heap = {};
}

TOVAN_IDENT(lvheap, "8.4", "26/11/21")
