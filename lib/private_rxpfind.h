// private_rxpfind.h (private): finding bytes many at a time.
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_RXPFIND_H
#define TOVAN_PRIVATE_RXPFIND_H

namespace [[gnu::visibility("hidden")]] tovan {

// Up to three bytes; spare places repeat the first one.
struct rxp_few {
    unsigned char bytes[3];
};

// Two neighbours: one of `first`, then one of `second`.
struct rxp_pair {
    rxp_few first;
    rxp_few second;
};

// The lowest position in [from, end) where the pair stands; null when there is
// none. The byte at `end` must be readable, and may be the second one.
const char *rxp_find_pair(const char *from, const char *end,
                          const rxp_pair &pair);

}  // namespace tovan

#endif
