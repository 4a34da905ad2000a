// fmmemory.cc: steps of a file-name match that are known to fail.
#include "private_fmmemory.h"

#include "chkalloc.h"
#include "ident.h"

#include <stdlib.h>
#include <string.h>

using namespace tovan;

namespace {

constexpr size_t first_capacity = 64;
constexpr size_t bits = bits_of_memory;
constexpr size_t star_mark = SIZE_MAX;  // no subject has so many words

// Odd and without pattern: the fraction of the golden ratio.
constexpr uint64_t spread = 0x9e3779b97f4a7c15;

uint64_t mixed(uint64_t sum, uint64_t number) {
    sum = (sum ^ number) * spread;
    return sum ^ sum >> 32;
}

uint64_t hash_of(text_pointer pattern, const brace_stack &open, size_t word) {
    uint64_t sum = mixed(word, reinterpret_cast<uintptr_t>(pattern));
    for (int i = 0; i < open.depth; ++i)
        sum = mixed(sum, reinterpret_cast<uintptr_t>(open.inside[i]));
    return sum;
}

bool same(const brace_stack &a, const brace_stack &b) {
    size_t depth = static_cast<size_t>(a.depth);
    return a.depth == b.depth &&
           memcmp(a.inside, b.inside, depth * sizeof a.inside[0]) == 0;
}

}  // namespace

void failure_memory::release() {
    free(entries);
}

// The entry of these three, or the free one where it would go. There is
// always a free one.
failure_memory::entry *failure_memory::slot_of(text_pointer pattern,
                                               const brace_stack &open,
                                               size_t word) {
    for (size_t i = hash_of(pattern, open, word);; ++i) {
        entry *each = &entries[i & (capacity - 1)];
        if (each->pattern == nullptr) return each;
        if (each->pattern == pattern && each->word == word &&
            same(each->open, open))
            return each;
    }
}

void failure_memory::grow() {
    entry *old = entries;
    size_t count = capacity;
    capacity = count == 0 ? first_capacity : 2 * count;
    entries = static_cast<entry *>(chkalloc(capacity * sizeof *entries));
    memset(entries, 0, capacity * sizeof *entries);
    for (size_t i = 0; i < count; ++i) {
        const entry &each = old[i];
        if (each.pattern != nullptr)
            *slot_of(each.pattern, each.open, each.word) = each;
    }
    free(old);
}

failure_memory::entry *failure_memory::added(text_pointer pattern,
                                             const brace_stack &open,
                                             size_t word) {
    if (2 * used >= capacity) grow();
    entry *each = slot_of(pattern, open, word);
    if (each->pattern == nullptr) {
        each->pattern = pattern;
        each->word = word;
        each->open.copy(open);
        each->value = word == star_mark ? SIZE_MAX : 0;
        ++used;
    }
    return each;
}

bool failure_memory::step_fails(text_pointer pattern, const brace_stack &open,
                                size_t at) {
    if (used == 0) return false;
    entry *each = slot_of(pattern, open, at / bits);
    return each->pattern != nullptr && (each->value >> at % bits & 1) != 0;
}

void failure_memory::add_step(text_pointer pattern, const brace_stack &open,
                              size_t at) {
    added(pattern, open, at / bits)->value |= uint64_t{1} << at % bits;
}

size_t failure_memory::star_fails_from(text_pointer pattern,
                                       const brace_stack &open) {
    if (used == 0) return SIZE_MAX;
    entry *each = slot_of(pattern, open, star_mark);
    return each->pattern != nullptr ? each->value : SIZE_MAX;
}

void failure_memory::add_star(text_pointer pattern, const brace_stack &open,
                              size_t at) {
    entry *each = added(pattern, open, star_mark);
    if (at < each->value) each->value = at;
}

TOVAN_IDENT(fmmemory, "8.4", "26/11/21")
