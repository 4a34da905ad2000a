// private_trait.h (private): traits for the library's own use.
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_TRAIT_H
#define TOVAN_PRIVATE_TRAIT_H

namespace [[gnu::visibility("hidden")]] tovan {

struct variable_heap;

// As trait() of trait.h. A program may own that word.
int trait(const char *name, int fallback, int must);

// The table, loaded at the first call; null when it cannot be.
const variable_heap *traits_table();

}  // namespace tovan

#endif
