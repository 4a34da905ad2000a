// private_fmmemory.h (private): steps of a file-name match that are known to
// fail.
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_FMMEMORY_H
#define TOVAN_PRIVATE_FMMEMORY_H

#include "private_fmatch.h"

namespace [[gnu::visibility("hidden")]] tovan {

constexpr int deepest = 5;  // open braces

// The open braces: where each begins, behind its "{", and where it ends, behind
// its "}" or null while nobody asked. Slots above the depth hold nothing.
struct brace_stack {
    int depth;
    text_pointer inside[deepest];
    text_pointer close[deepest];

    void copy(const brace_stack &from) {
        depth = from.depth;
        for (int i = 0; i < depth; ++i) {
            inside[i] = from.inside[i];
            close[i] = from.close[i];
        }
    }
};

// Places of the subject in an entry.
constexpr size_t bits_of_memory = 64;

// What fails is known by the position in the pattern and the open braces, and
//   - for a star, by the first byte of the subject from which it fails: then
//     it fails from all later ones;
//   - for any other step, byte by byte, a bit each.
// An entry takes 64 bits of the one or one number of the other kind.
struct failure_memory {
    void release();

    bool step_fails(text_pointer pattern, const brace_stack &open, size_t at);
    void add_step(text_pointer pattern, const brace_stack &open, size_t at);

    // The first position known to fail; SIZE_MAX when none is.
    size_t star_fails_from(text_pointer pattern, const brace_stack &open);
    void add_star(text_pointer pattern, const brace_stack &open, size_t at);

    struct entry {
        text_pointer pattern;  // null: the entry is free
        size_t word;           // of bits, or the mark of a star
        brace_stack open;
        uint64_t value;
    };

    entry *slot_of(text_pointer pattern, const brace_stack &open, size_t word);
    entry *added(text_pointer pattern, const brace_stack &open, size_t word);
    void grow();

    entry *entries;
    size_t capacity;  // a power of two, or 0
    size_t used;
};

}  // namespace tovan

#endif
