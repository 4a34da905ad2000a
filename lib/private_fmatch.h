// private_fmatch.h (private): what the two halves of the file-name matcher
// share.
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_FMATCH_H
#define TOVAN_PRIVATE_FMATCH_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace [[gnu::visibility("hidden")]] tovan {

// Bytes are unsigned everywhere: ranges compare them that way.
using text_pointer = const unsigned char *;

// The end of a text is in every set.
struct byte_set {
    bool holds[256];
    consteval explicit byte_set(const char *members) : holds() {
        holds[0] = true;
        for (; *members != '\0'; ++members)
            holds[static_cast<unsigned char>(*members)] = true;
    }
};

struct place {
    text_pointer pattern;
    text_pointer subject;
};

constexpr place nowhere = {nullptr, nullptr};

// The first such byte, or null.
inline text_pointer find_byte(text_pointer f, unsigned char byte) {
    return reinterpret_cast<text_pointer>(
        strchr(reinterpret_cast<const char *>(f), byte));
}

// Behind the class whose "[" is behind `p`, or null when the byte is not in
// it. A pattern that ends right behind "[" or "[^" holds nothing, not even
// what "^" would let through.
text_pointer past_holding_class(text_pointer p, unsigned char byte);

// All these take the position in the pattern and the one in the subject;
// `whole` is the pattern without its "!", for messages. They take words, not
// records: a record that comes in two registers is stored and loaded again.

// Matches with braces. A star before `p` may be tried again: behind it is
// again_p, and its next try is at again_f. Null: there is none.
bool match_braces(text_pointer whole, text_pointer p, text_pointer f,
                  text_pointer again_p, text_pointer again_f);

// Matches step by step and shows the steps.
bool match_traced(text_pointer whole, text_pointer f);

// Matches from a star at depth 0 on; where it meets a "{", by match_braces().
bool match_stars(text_pointer whole, text_pointer p, text_pointer f);

// Characters passed and places tried by the last match_braces(), stretches
// left to match_stars() by their length: the tests hold it against its bound.
extern size_t brace_steps;

// Reports of one match that are shown: the tests lower it.
extern size_t most_brace_reports;

}  // namespace tovan

#endif
