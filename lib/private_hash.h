// private_hash.h (private): a fast hash of texts for tables in memory.
// Builds on: nothing.
//
// Values differ between hosts of different byte order: nothing that leaves
// the process may depend on them.
#ifndef TOVAN_PRIVATE_HASH_H
#define TOVAN_PRIVATE_HASH_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace [[gnu::visibility("hidden")]] tovan {

namespace hashing {

// Odd and without pattern: the fractions of the golden ratio and of the
// square root of two.
constexpr uint64_t spread_odd = 0x9e3779b97f4a7c15;
constexpr uint64_t mix_odd = 0x6a09e667f3bcc909;

inline uint64_t load8(const char *bytes) {
    uint64_t word;
    memcpy(&word, bytes, sizeof word);
    return word;
}

inline uint32_t load4(const char *bytes) {
    uint32_t word;
    memcpy(&word, bytes, sizeof word);
    return word;
}

// The last 1 to 8 of n bytes in one word: two loads that may overlap.
inline uint64_t load_tail(const char *bytes, size_t n) {
    if (n >= 8) return load8(bytes + n - 8);
    if (n >= 4) return uint64_t{load4(bytes)} << 32 | load4(bytes + n - 4);
    if (n == 0) return 0;
    auto byte = [bytes](size_t i) {
        return uint64_t{static_cast<unsigned char>(bytes[i])};
    };
    return byte(0) << 16 | byte(n / 2) << 8 | byte(n - 1);
}

inline uint64_t mixed(uint64_t sum, uint64_t word) {
    sum = (sum ^ word) * spread_odd;
    return sum ^ sum >> 32;
}

}  // namespace hashing

// 32 well-mixed bits of n bytes, taken 8 at a time.
inline uint32_t text_tag(const char *bytes, size_t n) {
    uint64_t sum = n * hashing::mix_odd;
    const char *end = bytes + n;
    for (; end - bytes > 8; bytes += 8) {
        sum = hashing::mixed(sum, hashing::load8(bytes));
    }
    size_t left = static_cast<size_t>(end - bytes);
    sum = hashing::mixed(sum, hashing::load_tail(end - left, left));
    return static_cast<uint32_t>((sum * hashing::mix_odd) >> 32);
}

}  // namespace tovan

#endif
