// private_lvexpand.h (private): what the sources of the expansion language
// share.
// Builds on: lvexpand.h, strutil.h, chkalloc.h.
#ifndef TOVAN_PRIVATE_LVEXPAND_H
#define TOVAN_PRIVATE_LVEXPAND_H

#include "chkalloc.h"
#include "lvexpand.h"
#include "strutil.h"

namespace [[gnu::visibility("hidden")]] tovan {

// The brackets inside one construct. Zeroed: none; the list's block is the
// caller's to free.
struct bracket_map {
    dyd list;    // from the left
    int passed;  // of them, those before what is being read
};

// Finds the bracket that closes the construct whose inside begins here, and
// maps every bracket between.
//   inside    null-terminated
//   close     ")" or "]"
//   result    null when the text ends first
const char *map_brackets(bracket_map *map, const char *inside, char close);

// The bracket that closes a construct inside the mapped one; to be asked for
// constructs from the left to the right.
//   result    null when there is none inside the mapped construct
const char *mapped_close(bracket_map *map, const char *inside);

// As function() of lvexpand.h; the exported word may belong to the program.
char *function(char *text, dy *output);

// The words of a function's argument, which is cut up.
//   owner     library until the next call
char **words_of(char *argument);

// What a function found at its first use, for the rest of the process.
struct first_use {
    bool made;
    char *text;  // null when there was nothing
};

// Keeps a copy: a heap may be loaded again, the environment may change.
inline void remember(first_use *use, const char *text) {
    use->text = text != nullptr ? savestr(text) : nullptr;
    use->made = true;
}

inline void add_truth(dy *output, bool truth) {
    dyaddc(output, truth ? '1' : '0');
}

// Puts one blank between results.
inline void add_separator(dy *output, bool is_first) {
    if (!is_first) dyaddc(output, ' ');
}

// Ends the first word where it ends.
//   result    what follows the white space behind it
inline char *cut_word(char *text) {
    char *end = nextwhite(text);
    char *rest = overwhite(end);
    *end = '\0';
    return rest;
}

}  // namespace tovan

#endif
