// private_gethome.h (private): what the sources about users share.
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_GETHOME_H
#define TOVAN_PRIVATE_GETHOME_H

namespace [[gnu::visibility("hidden")]] tovan {

// The part of a user's name behind its first "+", or all of it.
const char *behind_plus(const char *name);

}  // namespace tovan

#endif
