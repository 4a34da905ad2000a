// private_hash.h (private): texts to numbers, by tables in memory.
// Builds on: errexit.h.
//
// Hash values differ between hosts of different byte order: nothing that
// leaves the process may depend on them.
#ifndef TOVAN_PRIVATE_HASH_H
#define TOVAN_PRIVATE_HASH_H

#include "errexit.h"

#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

namespace [[gnu::visibility("hidden")]] tovan {

namespace hashing {

// Odd and without pattern: the fractions of the golden ratio and of the
// square root of two.
constexpr uint64_t odd_1 = 0x9e3779b97f4a7c15;
constexpr uint64_t odd_2 = 0x6a09e667f3bcc909;

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

// All of n bytes, fewer than 8, in one word: loads that may overlap.
inline uint64_t load_short(const char *bytes, size_t n) {
    if (n >= 4) return uint64_t{load4(bytes)} << 32 | load4(bytes + n - 4);
    if (n == 0) return 0;
    auto byte = [bytes](size_t i) {
        return uint64_t{static_cast<unsigned char>(bytes[i])};
    };
    return byte(0) << 16 | byte(n / 2) << 8 | byte(n - 1);
}

__extension__ typedef unsigned __int128 product;

// Both halves of the product of two words: every bit of either has its say.
inline uint64_t folded(uint64_t a, uint64_t b) {
    product whole = product{a} * b;
    return static_cast<uint64_t>(whole) ^ static_cast<uint64_t>(whole >> 64);
}

}  // namespace hashing

// 32 well-mixed bits of n bytes, taken 16 at a time; the last 16 may overlap
// those before them.
inline uint32_t text_tag(const char *bytes, size_t n) {
    using namespace hashing;
    if (n < 8) {
        return static_cast<uint32_t>(
            folded(load_short(bytes, n) ^ odd_1, odd_2 + n));
    }
    uint64_t sum = odd_1 + n;
    size_t at = 0;
    for (; at + 16 < n; at += 16)
        sum = folded(load8(bytes + at) ^ sum, load8(bytes + at + 8) ^ odd_2);
    size_t last_but_one = n < 16 ? 0 : n - 16;
    return static_cast<uint32_t>(folded(load8(bytes + last_but_one) ^ sum,
                                        load8(bytes + n - 8) ^ odd_2));
}

// Whether two texts agree in n bytes.
inline bool same_text(const char *a, const char *b, size_t n) {
    using namespace hashing;
    if (n < 8) return load_short(a, n) == load_short(b, n);
    for (size_t at = 0; at + 8 < n; at += 8) {
        if (load8(a + at) != load8(b + at)) return false;
    }
    return load8(a + n - 8) == load8(b + n - 8);
}

// One place of a table; nothing is stored where `at` is 0.
struct hash_slot {
    uint32_t tag;  // its leading bits choose the first place to look
    uint32_t at;   // what the caller stores
};

// A table with open addressing: a search goes on to the next place until it
// meets a free one. At most half of the places are taken.
struct hash_table {
    hash_slot *slots;
    int shift;  // from a tag to its first place
    uint32_t mask;
};

// A table for `count` slots; its slots are released with free().
inline hash_table new_hash_table(size_t count) {
    int bits = 1;
    while (size_t{1} << bits < 2 * count)
        ++bits;
    size_t places = size_t{1} << bits;
    auto *slots = static_cast<hash_slot *>(calloc(places, sizeof(hash_slot)));
    if (slots == nullptr) nocore();
    return {slots, 32 - bits, static_cast<uint32_t>(places - 1)};
}

// The first slot with this tag for which is_wanted(slot) holds, or else the
// free slot where the search ended.
template <typename Wanted>
hash_slot *search(const hash_table *table, uint32_t tag, Wanted is_wanted) {
    uint32_t place = tag >> table->shift;
    while (true) {
        hash_slot *slot = table->slots + place;
        if (slot->at == 0) return slot;
        if (slot->tag == tag && is_wanted(slot)) return slot;
        place = (place + 1) & table->mask;
    }
}

}  // namespace tovan

#endif
