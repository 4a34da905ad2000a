// listing.h: sorted lists of names that match patterns.
#ifndef TOVAN_TOOLS_LISTING_H
#define TOVAN_TOOLS_LISTING_H

namespace vop {

// Starts a list of the names that match one of the patterns.
//   patterns   null-terminated; none of them: every name is taken
void start_listing(char **patterns);

// Adds a name that matches. It must stay where it is until the end.
void list_name(const char *name);

// Writes "NAME = value" for each name, sorted, and forgets them.
//   result     the status: 0, or 1 when there were none
int finish_listing(const char *(*value_of)(const char *name));

}  // namespace vop

#endif
