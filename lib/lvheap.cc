// lvheap.cc: heaps are read and checked; docs/formats/heap.md is the format.
//
// Nothing that a heap says about itself is believed. Its size claims memory
// only as bytes arrive. Then every chain is walked once, and each entry must
// lie inside with its texts and be met by one chain only; what passes is
// handed to the indexes, and whoever walks the heap later tests nothing.
//
// The walk waits for memory more than for anything else, since each entry
// says where the next one lies. So a group of chains is walked side by side.
#include "lvheap.h"

#include "chkalloc.h"
#include "errexit.h"
#include "ident.h"
#include "private_hash.h"
#include "private_io.h"
#include "private_lvindex.h"

#include <stdlib.h>
#include <string.h>

using tovan::found_name;
using tovan::found_subscript;
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

// Chains that are walked side by side.
constexpr int chains_at_once = 16;
static_assert(tovan::heap_buckets % chains_at_once == 0);

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
    found_name *names;   // in their own chains
    size_t name_count;
    found_subscript *subscripts;  // the names with a "["
    size_t subscript_count;
};

bool meets_again(check *state, uint32_t position) {
    unsigned char *byte = state->met + position / 8;
    unsigned char bit = static_cast<unsigned char>(1 << position % 8);
    bool again = (*byte & bit) != 0;
    *byte |= bit;
    return again;
}

struct scanned_name {
    const char *start;
    size_t length;
    int bucket;
    bool has_subscript;
};

// All that is asked of a name in one pass: strhash() and two searches would
// be three.
scanned_name scan_name(const char *name) {
    unsigned hash = 0;
    bool has_subscript = false;
    const char *next = name;
    for (; *next != '\0'; ++next) {
        has_subscript |= *next == '[';
        hash = lvhshtab[hash ^ static_cast<unsigned char>(*next)];
    }
    return {name, static_cast<size_t>(next - name), static_cast<int>(hash),
            has_subscript};
}

// Whether an entry, its name and its value lie inside.
bool is_sound(check *state, uint32_t position, scanned_name *name) {
    size_t name_at = size_t{position} * 8 + 7;
    if (name_at >= state->text_end) return false;
    if (meets_again(state, position)) return false;
    const heap_entry *entry = tovan::entry_at(state->heap, position);
    *name = scan_name(tovan::entry_name(entry));
    auto distance =
        static_cast<size_t>(tovan::entry_value(entry) - name->start);
    if (name->length >= distance) return false;
    if (name_at + distance >= state->text_end) return false;
    // Names that lie over each other would make this check quadratic.
    if (name->length > state->names_left) return false;
    state->names_left -= name->length;
    return true;
}

// Takes an entry up for the indexes. Chosen: one that hangs in a foreign chain
// is no damage; it is not found by its name, as by a walk of the name's chain.
bool accept_entry(check *state, int bucket, uint32_t position) {
    scanned_name name;
    if (!is_sound(state, position, &name)) return false;
    if (name.bucket != bucket) {
        state->heap->misplaced = true;
        return true;
    }
    uint32_t tag = tovan::text_tag(name.start, name.length);
    state->names[state->name_count++] = {tag, position};
    if (name.has_subscript) {
        state->subscripts[state->subscript_count++] = {position, bucket};
    }
    return true;
}

// Walks a group of chains, an entry of each in turn: the next entries are on
// their way from memory while the others are looked at.
bool accept_group(check *state, int first_bucket) {
    uint32_t at[chains_at_once];
    memcpy(at, state->heap->heads + first_bucket, sizeof at);
    bool goes_on = true;
    while (goes_on) {
        goes_on = false;
        for (int i = 0; i < chains_at_once; ++i) {
            if (at[i] == 0) continue;
            if (!accept_entry(state, first_bucket + i, at[i])) return false;
            at[i] = tovan::next_position(tovan::entry_at(state->heap, at[i]));
            __builtin_prefetch(state->heap->bytes + size_t{at[i]} * 8);
            goes_on = true;
        }
    }
    return true;
}

bool accept_chains(check *state) {
    for (int bucket = 0; bucket < tovan::heap_buckets;
         bucket += chains_at_once) {
        if (!accept_group(state, bucket)) return false;
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
    state.subscripts = static_cast<found_subscript *>(
        chkalloc(positions * sizeof(found_subscript)));
    return state;
}

void end_check(check *state) {
    free(state->met);
    free(state->names);
    free(state->subscripts);
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
        index_subscripts(heap, state.subscripts, state.subscript_count);
        index_names(heap, state.names, state.name_count);
    }
    end_check(&state);
    if (!sound) errexit("%s: kivs heap is damaged", name);
}

void tovan::free_heap(variable_heap *heap) {
    free(heap->bytes);
    free_hash_table(&heap->names);
    free_hash_table(&heap->bases);
    free(heap->subscripts);
    *heap = {};
}

TOVAN_IDENT(lvheap, "8.4", "26/11/21")
