// rxpfind.cc: finding bytes many at a time.
//
// Sixteen positions are tried at once where the processor has the
// instructions. The last, shorter stretch of a long text is tried as a whole
// block again, which overlaps what was tried before and finds nothing there.
#include "rxpcomp.h"

#include "ident.h"
#include "private_rxpfind.h"

#include <bit>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

using tovan::rxp_few;
using tovan::rxp_pair;

namespace {

bool is_one_of(const rxp_few &few, char byte) {
    auto b = static_cast<unsigned char>(byte);
    return b == few.bytes[0] || b == few.bytes[1] || b == few.bytes[2];
}

const char *find_one_by_one(const char *from, const char *end,
                            const rxp_pair &pair) {
    for (; from < end; from++) {
        if (is_one_of(pair.first, from[0]) && is_one_of(pair.second, from[1]))
            return from;
    }
    return nullptr;
}

#ifdef __SSE2__

constexpr int block = 16;

// As many different bytes of the three as there are to be looked for.
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

template <int count>
const char *find_in_blocks(const char *from, const char *end,
                           const rxp_pair &pair) {
    const few_bytes<count> first(pair.first);
    const few_bytes<count> second(pair.second);
    for (;;) {
        __m128i both = _mm_and_si128(first.among(from), second.among(from + 1));
        auto places = static_cast<unsigned>(_mm_movemask_epi8(both));
        if (places != 0) return from + std::countr_zero(places);
        if (end - from == block) return nullptr;
        from += end - from < 2 * block ? end - from - block : block;
    }
}

bool is_single(const rxp_few &few) {
    return few.bytes[0] == few.bytes[1] && few.bytes[0] == few.bytes[2];
}

#endif

}  // namespace

const char *tovan::rxp_find_pair(const char *from, const char *end,
                                 const rxp_pair &pair) {
#ifdef __SSE2__
    if (end - from >= block) {
        return is_single(pair.first) && is_single(pair.second)
                   ? find_in_blocks<1>(from, end, pair)
                   : find_in_blocks<3>(from, end, pair);
    }
#endif
    return find_one_by_one(from, end, pair);
}

TOVAN_IDENT(rxpfind, "8.4", "26/11/21")
