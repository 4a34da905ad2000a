// private_findfile.h (private): search paths under names of the library's
// own.
// Builds on: dystr.h.
//
// The exported word `spread` may belong to the program that links the
// library.
#ifndef TOVAN_PRIVATE_FINDFILE_H
#define TOVAN_PRIVATE_FINDFILE_H

#include "dystr.h"

namespace [[gnu::visibility("hidden")]] tovan {

// As spread() of findfile.h.
void spread(const char *start, const char *end, int use_defaults, dy *output);

}  // namespace tovan

#endif
