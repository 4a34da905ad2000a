// private_fmfind.h (private): the end and the alternatives of a brace.
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_FMFIND_H
#define TOVAN_PRIVATE_FMFIND_H

#include "private_fmatch.h"

namespace [[gnu::visibility("hidden")]] tovan {

enum finder { for_close, for_comma };

// What the finders look at.
constexpr byte_set sought("\\[{,}");

// Looks for the end of the brace whose "{" is somewhere before `p`: behind its
// "}", or at the end of the pattern. Or looks for its next alternative: behind
// the "," before that end, or null. *steps counts the way.
// Deliberate: a class ends at the next "[" for the one and at the next "]" for
// the other, so that they may disagree about the end of the brace (test
// class_ends_differ_in_the_two_finders).
template <finder what>
inline text_pointer find_in_brace(text_pointer p, size_t *steps) {
    constexpr unsigned char class_end = what == for_close ? '[' : ']';
    text_pointer start = p;
    text_pointer found = nullptr;
    for (int depth = 0; depth >= 0;) {
        while (!sought.holds[*p])
            ++p;
        unsigned char c = *p;
        if (c == '\0') {
            if (what == for_close) found = p;
            break;
        }
        ++p;
        if (c == '\\') {
            p += *p != '\0';
        } else if (c == '[') {
            p += *p == ']';
            while (*p != '\0' && *p++ != class_end) {
            }
        } else if (c == '{') {
            ++depth;
        } else if (c == '}') {
            --depth;
            if (what == for_close && depth < 0) found = p;
        } else if (what == for_comma && depth == 0) {
            found = p;
            break;
        }
    }
    *steps += static_cast<size_t>(p - start);
    return found;
}

}  // namespace tovan

#endif
