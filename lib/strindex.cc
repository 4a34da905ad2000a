// strindex.cc: where a string occurs in another.
#include "strutil.h"

#include "chkalloc.h"
#include "ident.h"

#include <stdlib.h>
#include <string.h>

namespace {

constexpr size_t usual_length = 64;  // longer patterns go to the heap

// A pattern read from its end, with the border table that lets a search go
// on after a mismatch without reading any character of the text again: of
// the last i + 1 characters, borders[i] is the length of the longest proper
// suffix that is a prefix as well.
struct backward_pattern {
    const char *text;
    size_t length;
    size_t *borders;

    char at(size_t i) const {
        return text[length - 1 - i];
    }

    // How many characters match once `next` follows `matched` of them.
    size_t advance(size_t matched, char next) const {
        while (matched > 0 && at(matched) != next) {
            matched = borders[matched - 1];
        }
        return at(matched) == next ? matched + 1 : 0;
    }
};

void find_borders(const backward_pattern &pattern) {
    pattern.borders[0] = 0;
    for (size_t i = 1; i < pattern.length; i++) {
        pattern.borders[i] =
            pattern.advance(pattern.borders[i - 1], pattern.at(i));
    }
}

int last_occurrence(const char *text, const backward_pattern &pattern) {
    size_t matched = 0;
    for (size_t i = strlen(text); i-- > 0;) {
        matched = pattern.advance(matched, text[i]);
        if (matched == pattern.length) return static_cast<int>(i);
    }
    return -1;
}

}  // namespace

int strindex(const char *text, const char *pattern) {
    if (*pattern == '\0') return -1;
    const char *found = strstr(text, pattern);
    return found != nullptr ? static_cast<int>(found - text) : -1;
}

int strrindex(const char *text, const char *pattern) {
    size_t length = strlen(pattern);
    if (length == 0) return -1;
    size_t usual[usual_length];
    void *longer = nullptr;
    if (length > usual_length) longer = chkalloc(length * sizeof *usual);
    backward_pattern backward = {
        pattern, length, longer ? static_cast<size_t *>(longer) : usual};
    find_borders(backward);
    int index = last_occurrence(text, backward);
    free(longer);
    return index;
}

TOVAN_IDENT(strindex, "8.4", "26/11/21")
