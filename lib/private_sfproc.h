// private_sfproc.h (private): the substitution engine for texts with NULs.
// Builds on: dystr.h.
#ifndef TOVAN_PRIVATE_SFPROC_H
#define TOVAN_PRIVATE_SFPROC_H

#include "dystr.h"

#include <stddef.h>
#include <string.h>

namespace [[gnu::visibility("hidden")]] tovan {

// Bits of sf_uflag.
constexpr int trace_names = 1;
constexpr int write_nothing = 2;

// A part of a text, [start, end).
struct sf_span {
    const char *start;
    const char *end;
};

// The first "@" of a text; null when there is none.
inline const char *find_at_sign(sf_span text) {
    auto length = static_cast<size_t>(text.end - text.start);
    return static_cast<const char *>(memchr(text.start, '@', length));
}

// Appends a text with its references replaced, as sf_proc() does.
//   text      *text.end is NUL; NULs before it are copied
//   at_sign   the first "@" of the text; null when there is none
//   result    whether every reference was sound
bool substitute(sf_span text, const char *at_sign, dy *output,
                const char *where, int line);

// Appends the words of a text. A run of separators is one; before the first
// word and behind the last it counts too.
//   separators  the characters that separate
//   between     what is written for each run
void write_split(dy *output, sf_span words, const char *separators,
                 sf_span between);

// Appends each word (parted by blanks, tabs and newlines) between two texts.
void write_each(dy *output, sf_span words, const char *before,
                const char *after);

// Appends the words (as above) with a character between two.
void write_joined(dy *output, sf_span words, char between);

// Appends a text for use inside double quotes: a backslash before quotes and
// backslashes, \t and \n for tabs and newlines.
void write_quoted(dy *output, sf_span text);

}  // namespace tovan

#endif
