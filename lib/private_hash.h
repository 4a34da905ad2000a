// private_hash.h (private): texts to numbers, by tables in memory.
// Builds on: nothing.
//
// Hash values differ between hosts of different byte order: nothing that
// leaves the process may depend on them.
#ifndef TOVAN_PRIVATE_HASH_H
#define TOVAN_PRIVATE_HASH_H

#include <stddef.h>
#include <stdint.h>
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

// Whether two texts agree in n bytes. Each answer has a return of its own:
// searches branch on it, and need not make a number of it first.
[[gnu::always_inline]] inline bool same_text(const char *a, const char *b,
                                             size_t n) {
    using namespace hashing;
    if (n < 8) {
        if (load_short(a, n) != load_short(b, n)) return false;
        return true;
    }
    for (size_t at = 0; at + 8 < n; at += 8) {
        if (load8(a + at) != load8(b + at)) return false;
    }
    if (load8(a + n - 8) != load8(b + n - 8)) return false;
    return true;
}

// One place of a table; nothing is stored where `at` is 0.
struct hash_slot {
    uint32_t tag;  // its leading bits choose the first place to look
    uint32_t at;   // what the caller stores
};

// How far a search goes. At half load not one text in a hundred thousand
// needs more places, unless texts are made up for it.
constexpr size_t longest_search = 64;

// A table with open addressing: a search goes on to the next place until it
// meets a free one. At most half of the places are taken. Texts that find no
// place near their first one go to a tree (hashtree.cc): texts with equal tags
// cost the logarithm of their number each, and not each other.
struct hash_table {
    hash_slot *slots;  // behind the last first place is room for its search
    int shift;         // from a tag to its first place
    void *others;      // the tree; null: empty
};

// Its slots; none in a table of zeros.
inline size_t count_places(const hash_table *table) {
    if (table->slots == nullptr) return 0;
    return (size_t{1} << (32 - table->shift)) + longest_search;
}

// A text as the tree knows it.
struct hashed_text {
    const char *bytes;
    size_t length;
    uint32_t tag;
};

// A table for `count` slots.
//   owner     caller: free_hash_table
hash_table new_hash_table(size_t count);

// Back to a table of zeros, which is also one.
void free_hash_table(hash_table *table);

// The slot of a text in the tree, or null.
hash_slot *find_other(const hash_table *table, const hashed_text &text);

// The same; a new one with nothing stored when there is none.
hash_slot *other_slot(hash_table *table, const hashed_text &text);

// What is stored with this tag in a slot for which is_wanted(slot) holds; 0
// when there is none. text() is the hashed_text that is looked for, of which
// most searches need the tag only.
// An empty place ends the search: where texts are removed, the tree has to be
// asked then.
template <typename Wanted, typename Text>
uint32_t find_at(const hash_table *table, uint32_t tag, Wanted is_wanted,
                 Text text) {
    const hash_slot *slot = table->slots + (tag >> table->shift);
    const hash_slot *end = slot + longest_search;
    do {
        uint32_t at = slot->at;
        if (at == 0) return 0;
        if (slot->tag == tag && is_wanted(slot)) return at;
    } while (++slot != end);
    const hash_slot *other = find_other(table, text());
    return other != nullptr ? other->at : 0;
}

// The slot of such a text, or an empty one for the caller to fill.
template <typename Wanted, typename Text>
hash_slot *slot_for(hash_table *table, uint32_t tag, Wanted is_wanted,
                    Text text) {
    hash_slot *slot = table->slots + (tag >> table->shift);
    const hash_slot *end = slot + longest_search;
    do {
        if (slot->at == 0) return slot;
        if (slot->tag == tag && is_wanted(slot)) return slot;
    } while (++slot != end);
    return other_slot(table, text());
}

// Whether a slot lies in the tree.
bool is_other(const hash_table *table, const hash_slot *slot);

void remove_other(hash_table *table, const hashed_text &text);

// Texts compared in trees so far, for the tests of their bounds.
extern size_t other_comparisons;

}  // namespace tovan

#endif
