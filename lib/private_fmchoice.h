// private_fmchoice.h (private): what is left to try in a match with braces.
// Builds on: chkalloc.h, private_fmmemory.h.
#ifndef TOVAN_PRIVATE_FMCHOICE_H
#define TOVAN_PRIVATE_FMCHOICE_H

#include "chkalloc.h"
#include "private_fmmemory.h"

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

namespace [[gnu::visibility("hidden")]] tovan {

// Why a step was made: shown by the trace, above the level.
enum step_mark {
    first_step = 0,
    by_alternative = 0x200,
    by_single_star = 0x400,   // a star before "[", "?" or a backslash
    by_brace_star = 0x600,    // a star before "{", or "," and "}" in braces
    by_literal_star = 0x800,  // a star before any other character
    end_of_brace = 0x1000,    // no step: failures are remembered here
};

inline step_mark mark_of_star(unsigned char next, bool inside) {
    if (next == '[' || next == '?' || next == '\\') return by_single_star;
    if (next == '{') return by_brace_star;
    if (inside && (next == ',' || next == '}')) return by_brace_star;
    return by_literal_star;
}

const text_pointer no_limit = reinterpret_cast<text_pointer>(UINTPTR_MAX);

struct choice {
    step_mark mark;
    int level;             // of the step that left it
    text_pointer pattern;  // what to try next; for a star, behind it
    text_pointer limit;    // where no try is left for a star
    text_pointer subject;  // where to try next
    text_pointer start;    // where the choice was met
    size_t reports;        // before it was left
    brace_stack open;
};

// The newest choice comes last. The first few need no heap.
struct choice_stack {
    static constexpr size_t local_room = 16;

    choice local[local_room];
    choice *each = local;
    size_t count = 0;
    size_t capacity = local_room;

    // One more, not filled.
    choice *added() {
        if (count == capacity) grow();
        return &each[count++];
    }

    void grow() {
        size_t bytes = count * sizeof *each;
        if (each == local) {
            each = static_cast<choice *>(chkalloc(2 * bytes));
            memcpy(each, local, bytes);
        } else {
            each = static_cast<choice *>(chkrealloc(each, 2 * bytes));
        }
        capacity = 2 * count;
    }

    void release() {
        if (each != local) free(each);
    }
};

}  // namespace tovan

#endif
