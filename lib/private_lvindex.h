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

// One that has a "[".
struct found_subscript {
    uint32_t position;
    int bucket;
};

// Both take what was found with the entries of each chain in order, whatever
// the order of the chains.

// Makes the index of whole names; of equal names the first one stays.
void index_names(variable_heap *heap, const found_name *names, size_t count);

// Makes the index of texts before a "[".
void index_subscripts(variable_heap *heap, const found_subscript *found,
                      size_t count);

}  // namespace tovan

#endif
