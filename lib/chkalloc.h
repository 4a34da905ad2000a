// chkalloc.h: memory that never comes back null, blocks that are released
// together, and a small arena that needs no heap.
// Builds on: errexit.h, dypadd.h.
//
// Always: no allocator of the heap returns null, so that no caller tests. Its
// blocks are released with free(3).
// Order: tobefreed and ptobefreed at any time, befreed once, at the end of a
// run. The arena is ready from the start and cannot be reset.
// Errors: out of memory ends the process through nocore(): "progname: Ran out
// of memory" on standard error, then abort; no exit hook runs. The arena
// answers null instead.
#ifndef TOVAN_CHKALLOC_H
#define TOVAN_CHKALLOC_H

#include "attrs.h"

#include <stddef.h>

TOVAN_BEGIN_C

// A block of `size` bytes, not cleared.
//   result    never null
//   owner     caller (free)
//   edge      a size of 0 gives a block of its own
void *chkalloc(size_t size);

// Makes `block` `size` bytes large, moving it where necessary.
//   block     from the heap, or null for a new one; stale afterwards
//   result    never null; the bytes of the old block that fit are kept
//   owner     caller (free)
//   edge      a size of 0 keeps a block
void *chkrealloc(void *block, size_t size);

// A copy of a string.
//   text      not null
//   owner     caller (free)
char *savestr(const char *text);

// A copy of exactly `n` bytes, NULs among them included, with a NUL behind.
//   owner     caller (free)
char *savenstr(const char *bytes, size_t n);

// Moves a string out of an oversized buffer into a block of its own size.
//   text      from the heap; released
//   owner     caller (free)
char *savenfree(char *text);

// Registers a block for befreed().
//   block     from the heap, not released otherwise
//   edge      a null ends the list for befreed(): blocks registered behind
//             it are not released
void tobefreed(void *block);

// Registers a pointer variable for befreed(), which releases what the
// variable holds at that time: it may be assigned in between.
//   variable  address of a pointer variable of any type, alive until
//             befreed(); what it holds is from the heap or null
void ptobefreed(void *variable);

// Releases what is registered: variables first, the newest before the older,
// then blocks in the order of their registration.
//   edge      nothing is reset, neither variables nor lists: not to be called
//             twice, nor followed by further registrations
void befreed(void);

// A region of the arena of 4096 bytes: the first free one that is large
// enough, cut to `size` rounded up to a multiple of 4.
//   result    null when there is none, or when its rest would be the 66th
//             region in the table of free and taken ones
//   owner     caller (nfree)
//   edge      a size of 0 takes an entry of the table and no room
void *nalloc(unsigned size);

// Gives a region back; free neighbours become one.
//   region    from nalloc() or nrealloc()
//   result    0, or -1 when no region starts there (nothing has changed)
//   edge      a free region may be freed again while it has not become part
//             of a neighbour
int nfree(void *region);

// Makes a region smaller, which moves it.
//   result    the new region with as much of the old content as it holds;
//             `region` itself when it is not larger than `size`: it never
//             grows
//   owner     caller (nfree); the old region is freed when it moved
//   fails     null: no region starts there, or no room for the smaller one
//             (the old region stays)
void *nrealloc(void *region, unsigned size);

TOVAN_END_C

#endif
