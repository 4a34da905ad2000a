// private_sfrefer.h (private): what stands between two "@".
// Builds on: private_sfproc.h.
#ifndef TOVAN_PRIVATE_SFREFER_H
#define TOVAN_PRIVATE_SFREFER_H

#include "private_sfproc.h"

#include <stddef.h>

namespace [[gnu::visibility("hidden")]] tovan {

struct sf_reference {
    const char *name;
    size_t name_length;
    bool is_quoted;  // by "%s"
    char operation;  // the character behind the name, "@" for none
    char variant;    // the one behind "#" or a backslash
    sf_span argument;
    const char *after;  // behind the closing "@"
};

// Reads what follows the name of a reference; of `found` the name is set and
// all else is zero.
//   result    null, or what is wrong
//   edge      the argument holds until the next call
const char *read_reference(sf_reference *found, const char *next);

}  // namespace tovan

#endif
