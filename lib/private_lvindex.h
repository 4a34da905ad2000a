// private_lvindex.h (private): from the check of a heap to its indexes.
// Builds on: private_lvheap.h.
#ifndef TOVAN_PRIVATE_LVINDEX_H
#define TOVAN_PRIVATE_LVINDEX_H

#include "private_lvheap.h"

namespace [[gnu::visibility("hidden")]] tovan {

// A name in its own chain.
struct found_name {
    uint32_t tag;       // text_tag() of the name
    uint32_t position;  // of its entry, in 8-byte units
};

// Makes the index of whole names; of equal names the first one stays.
void index_names(variable_heap *heap, const found_name *names, size_t count);

// Makes the index of texts before a "[" from the positions of all names that
// have one, in the order of a scan.
void index_subscripts(variable_heap *heap, const uint32_t *positions,
                      size_t count);

}  // namespace tovan

#endif
