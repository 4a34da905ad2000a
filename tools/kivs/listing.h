// listing.h: a heap as text.
#ifndef TOVAN_TOOLS_KIVS_LISTING_H
#define TOVAN_TOOLS_KIVS_LISTING_H

namespace kivs {

// Prints the variables of a heap file ("-": standard input) as definitions,
// in the order of their names.
void list_heap(const char *file);

}  // namespace kivs

#endif
