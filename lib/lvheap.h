// lvheap.h: what readers and writers of variable heaps share.
// Builds on: errexit.h, chkalloc.h.
//
// A variable heap is one file of names, values and flags: the build tree's
// variables (lvget.h) and the traits of a host (trait.h) come in it. The
// format is laid out in docs/formats/heap.md; names hang in 256 chains that
// are chosen with the table below.
// Errors: none here; those who load a heap report its defects.
#ifndef TOVAN_LVHEAP_H
#define TOVAN_LVHEAP_H

#include "attrs.h"

TOVAN_BEGIN_C

// The chain of a name is strhash(name, 0, lvhshtab). A permutation of 0 to
// 255, fixed for ever: files hold what was hashed with it.
extern const unsigned char lvhshtab[256];

// What a walk over a heap calls for each entry.
//   bucket    the chain, 0 to 255
//   flags     the flags byte, sign-extended; 0x02 marks a variable that goes
//             into the environment, the other bits belong to the writer
//   name      with its subscript, if it has one
//   value     never null
//   result    kept by traitwalk, not looked at by lvwalk
//   owner     name and value: library, while the heap stays loaded
typedef int (*lvwalk_rtn)(int bucket, int flags, const char *name,
                          const char *value);

TOVAN_END_C

#endif
