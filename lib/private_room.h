// private_room.h (private): how strings and arrays grow.
// Builds on: dystr.h.
//
// A record shows a capacity that grows in small fixed steps. The block behind
// it is larger: growing it asks for half as much again, and as long as the
// allocator says that the block suffices, the next steps cost no copy. No
// field keeps the difference, so a buffer that the caller supplied, and one
// that the caller takes away, are as good as one of ours. A program that
// replaces malloc must replace malloc_usable_size too, as the C library asks.
#ifndef TOVAN_PRIVATE_ROOM_H
#define TOVAN_PRIVATE_ROOM_H

#include "dystr.h"

#include <stddef.h>
#include <stdint.h>

namespace [[gnu::visibility("hidden")]] tovan {

// A string's step for one character, and the unit of its other steps.
constexpr int string_step = 64;

// The step for k characters: at least k + 1, at most k + 64.
constexpr int64_t step_for(int64_t k) {
    return (k + string_step) / string_step * string_step;
}
static_assert(step_for(0) == 64 && step_for(63) == 64 && step_for(64) == 128);

// A capacity of `wanted`, or the largest there is.
//   fails     `needed` is beyond the largest, 2^31-1: nocore()
int limited_capacity(int64_t wanted, int64_t needed);

// A block of at least `size` bytes with the content of `block`.
//   block     a heap block, or null
//   owner     as with realloc: `block` is stale when another one comes back
//   fails     nocore()
void *make_room(void *block, size_t size);

// How far an address lies behind the start of a block; not below the size of
// the block for one that lies outside.
inline size_t offset_in(const void *block, const void *address) {
    return reinterpret_cast<uintptr_t>(address) -
           reinterpret_cast<uintptr_t>(block);
}

// Raises a string's capacity by `step` and makes its buffer follow.
//   needed    what the string will hold at least, terminator included
//   fails     nocore(), also when 2^31-1 bytes do not suffice
//   edge      capacity 0 is "no buffer", whatever the buffer field holds
void grow_string(dy *string, int64_t step, int64_t needed);

// Room for k more bytes, by the step for k. The bytes to be added may be a
// part of the string itself, which growth moves.
//   result    where `bytes` are now
//   fails     as grow_string
const char *grow_string_for(dy *string, const char *bytes, size_t k);

}  // namespace tovan

#endif
