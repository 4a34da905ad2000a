// private_copy.h (private): copies of short runs.
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_COPY_H
#define TOVAN_PRIVATE_COPY_H

#include <stddef.h>
#include <string.h>

namespace [[gnu::visibility("hidden")]] tovan {

constexpr size_t short_run = 16;  // copied without a call

// Copies up to short_run bytes as two loads and two stores that may overlap:
// a call would cost more than the copy.
[[gnu::always_inline]] inline void copy_short(char *to, const char *from,
                                              size_t n) {
    if (n >= 8) {
        memcpy(to, from, 8);
        memcpy(to + n - 8, from + n - 8, 8);
    } else if (n >= 4) {
        memcpy(to, from, 4);
        memcpy(to + n - 4, from + n - 4, 4);
    } else if (n > 0) {
        to[0] = from[0];
        to[n / 2] = from[n / 2];
        to[n - 1] = from[n - 1];
    }
}

}  // namespace tovan

#endif
