// nalloc.cc: regions of a fixed arena, for places where the heap must not be
// touched.
//
// A table of slots, in address order, tiles the arena: each slot ends where
// the next begins. A request takes the first free slot that is large enough
// and cuts the rest off as a new free slot; a release merges a slot with its
// free neighbours, so that two free slots never touch. After nalloc(8),
// nalloc(4) and nfree of the first:
//
//     free 0..8 | used 8..12 | free 12..4096
#include "chkalloc.h"

#include "ident.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace {

constexpr unsigned arena_size = 4096;
constexpr int most_slots = 65;
constexpr unsigned unit = 4;  // sizes are multiples of it

struct slot {
    uint32_t in_use;
    char *start;
    char *end;
};

alignas(max_align_t) constinit char area[arena_size] = {};

// Which parts of the area are taken. Starts as one free slot, kept by
// nalloc() and nfree(), never reset.
struct arena_state {
    slot slots[most_slots];
    slot *end;  // just past the last live slot
};
constinit arena_state arena = {{{0, area, area + arena_size}}, arena.slots + 1};

unsigned room_in(const slot &at) {
    return static_cast<unsigned>(at.end - at.start);
}

// For sizes up to that of the arena: others might wrap.
unsigned rounded(unsigned size) {
    return (size + unit - 1) / unit * unit;
}

slot *first_fit(unsigned size) {
    for (slot *at = arena.slots; at != arena.end; at++) {
        if (!at->in_use && room_in(*at) >= size) return at;
    }
    return nullptr;
}

// Chosen: only live slots are looked at. A stale entry just past them may
// name an address too, but a match there would free or move what is not
// there any more.
slot *slot_at(const void *region) {
    for (slot *at = arena.slots; at != arena.end; at++) {
        if (at->start == region) return at;
    }
    return nullptr;
}

// Leaves `size` bytes in the slot, the rest in a new one behind it; false
// when the table is full.
bool split(slot *at, unsigned size) {
    if (arena.end == arena.slots + most_slots) return false;
    memmove(at + 1, at, static_cast<size_t>(arena.end - at) * sizeof *at);
    arena.end++;
    at->end = at[1].start = at->start + size;
    return true;
}

void absorb_next(slot *at) {
    slot *next = at + 1;
    at->end = next->end;
    arena.end--;
    memmove(next, next + 1,
            static_cast<size_t>(arena.end - next) * sizeof *next);
}

}  // namespace

void *nalloc(unsigned size) {
    if (size > arena_size) return nullptr;
    size = rounded(size);
    slot *fit = first_fit(size);
    if (fit == nullptr) return nullptr;
    if (room_in(*fit) != size && !split(fit, size)) return nullptr;
    fit->in_use = 1;
    return fit->start;
}

int nfree(void *region) {
    slot *at = slot_at(region);
    if (at == nullptr) return -1;
    at->in_use = 0;
    if (at + 1 != arena.end && !at[1].in_use) absorb_next(at);
    if (at != arena.slots && !at[-1].in_use) absorb_next(at - 1);
    return 0;
}

void *nrealloc(void *region, unsigned size) {
    const slot *at = slot_at(region);
    if (at == nullptr) return nullptr;
    // Deliberate: a block never grows, it comes back as it is (test
    // nrealloc_larger_keeps_the_block).
    if (room_in(*at) <= size) return region;
    void *smaller = nalloc(size);
    if (smaller == nullptr) return nullptr;
    memmove(smaller, region, rounded(size));
    nfree(region);
    return smaller;
}

TOVAN_IDENT(nalloc, "8.4", "26/11/21")
