// private_rxpfind.h (private): finding bytes many at a time.
// Builds on: nothing.
//
// Sixteen positions are tried at once where the processor has the
// instructions. The last, shorter stretch of a long text is tried as a whole
// block again, which overlaps what was tried before and finds nothing there.
#ifndef TOVAN_PRIVATE_RXPFIND_H
#define TOVAN_PRIVATE_RXPFIND_H

#ifdef __SSE2__
#include <emmintrin.h>
#endif
#include <bit>

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

namespace finding {

// How many of the bytes are looked at: 1 or 3.
template <int count>
bool is_one_of(const rxp_few &few, char byte) {
    auto b = static_cast<unsigned char>(byte);
    for (int i = 0; i < count; i++) {
        if (b == few.bytes[i]) return true;
    }
    return false;
}

template <int count>
const char *one_by_one(const char *from, const char *end,
                       const rxp_pair &pair) {
    for (; from < end; from++) {
        if (is_one_of<count>(pair.first, from[0]) &&
            is_one_of<count>(pair.second, from[1]))
            return from;
    }
    return nullptr;
}

#ifdef __SSE2__

constexpr int block = 16;

template <int count>
class few_bytes {
  public:
    explicit few_bytes(const rxp_few &few) {
        for (int i = 0; i < count; i++)
            repeated[i] = _mm_set1_epi8(static_cast<char>(few.bytes[i]));
    }

    // 0xff for each of the bytes from `at` on that is one of the few.
    __m128i among(const char *at) const {
        __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(at));
        __m128i found = _mm_cmpeq_epi8(bytes, repeated[0]);
        for (int i = 1; i < count; i++)
            found = _mm_or_si128(found, _mm_cmpeq_epi8(bytes, repeated[i]));
        return found;
    }

  private:
    __m128i repeated[count];
};

// Bit i: the pair stands at `from` + i.
template <int count>
[[gnu::always_inline]] inline unsigned places(const char *from,
                                              const few_bytes<count> &first,
                                              const few_bytes<count> &second) {
    __m128i both = _mm_and_si128(first.among(from), second.among(from + 1));
    return static_cast<unsigned>(_mm_movemask_epi8(both));
}

template <int count>
[[gnu::always_inline]] inline const char *in_blocks(const char *from,
                                                    const char *end,
                                                    const rxp_pair &pair) {
    const few_bytes<count> first(pair.first);
    const few_bytes<count> second(pair.second);
    const char *last = end - block;
    for (; from < last; from += block) {
        unsigned found = places(from, first, second);
        if (found != 0) return from + std::countr_zero(found);
    }
    unsigned found = places(last, first, second);
    return found != 0 ? last + std::countr_zero(found) : nullptr;
}

#endif

}  // namespace finding

// The lowest position in [from, end) where the pair stands; null when there is
// none. The byte at `end` must be readable, and may be the second one.
//   count   how many bytes of each few are different: 1 or up to 3
template <int count>
[[gnu::always_inline]] inline const char *rxp_find_pair(const char *from,
                                                        const char *end,
                                                        const rxp_pair &pair) {
#ifdef __SSE2__
    if (end - from >= finding::block)
        return finding::in_blocks<count>(from, end, pair);
#endif
    return finding::one_by_one<count>(from, end, pair);
}

}  // namespace tovan

#endif
