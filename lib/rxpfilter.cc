// rxpfilter.cc: subjects and positions where a program cannot match.
#include "rxpcomp.h"

#include "ident.h"
#include "private_rxp.h"
#include "private_rxpfind.h"
#include "private_rxpplan.h"

#include <string.h>

using tovan::rxp_filters;
using tovan::rxp_needle;

namespace {

unsigned byte_at(const char *position) {
    return static_cast<unsigned char>(*position);
}

bool has_right_end(const rxp_filters &filters, const char *start,
                   const char *end) {
    if (!rxp_has(filters.last, 0)) {
        if (end == start || !rxp_has(filters.last, byte_at(end - 1)))
            return false;
    }
    const rxp_needle &tail = filters.tail;
    auto length = static_cast<size_t>(tail.length);
    return end - start >= tail.length &&
           memcmp(end - length, tail.text, length) == 0;
}

bool has_right_neighbours(const rxp_needle &needle, const char *start,
                          const char *place) {
    if (!rxp_has(needle.after, byte_at(place + needle.length))) return false;
    if (needle.is_first) return true;
    return place != start && rxp_has(needle.before, byte_at(place - 1));
}

// The next candidate for the needle in [from, end).
const char *next_place(const rxp_needle &needle, const char *from,
                       const char *end) {
    if (needle.length == 1) {
        auto room = static_cast<size_t>(end - from);
        return static_cast<const char *>(memchr(from, needle.text[0], room));
    }
    if (end - from < needle.length) return nullptr;
    const char *last = end - needle.length;
    const char *pair = tovan::rxp_find_pair<1>(
        from + needle.rare, last + needle.rare + 1, needle.pair);
    return pair == nullptr ? nullptr : pair - needle.rare;
}

}  // namespace

const char *tovan::rxp_find_needle(const rxp_needle &needle, const char *start,
                                   const char *end) {
    auto length = static_cast<size_t>(needle.length);
    for (const char *from = start;; from++) {
        from = next_place(needle, from, end);
        if (from == nullptr) return nullptr;
        if (memcmp(from, needle.text, length) == 0 &&
            has_right_neighbours(needle, start, from))
            return from;
    }
}

bool tovan::rxp_may_match(const rxp_filters &filters, const char *start,
                          const char *end) {
    if (filters.is_at_end && !has_right_end(filters, start, end)) return false;
    return filters.needle.length == 0 ||
           rxp_find_needle(filters.needle, start, end) != nullptr;
}

const char *tovan::rxp_find_start(const rxp_filters &filters, const char *from,
                                  const char *end) {
    if (filters.has_pair) return rxp_find_pair<3>(from, end, filters.pair);
    for (; from < end; from++) {
        if (rxp_has(filters.first, byte_at(from)) &&
            rxp_has(filters.second, byte_at(from + 1)))
            return from;
    }
    return rxp_has(filters.first, 0) ? end : nullptr;
}

TOVAN_IDENT(rxpfilter, "8.4", "26/11/21")
