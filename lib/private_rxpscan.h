// private_rxpscan.h (private): the tokens of a regular expression.
// Builds on: private_rxp.h.
#ifndef TOVAN_PRIVATE_RXPSCAN_H
#define TOVAN_PRIVATE_RXPSCAN_H

#include "private_rxp.h"

namespace [[gnu::visibility("hidden")]] tovan {

enum class rxp_token : unsigned char {
    none,           // before the first one
    literal,        // a character
    item,           // any other single state
    closure,        // "*" or "+"
    group_open,     // "<"
    group_close,    // ">"
    alternation,    // "|"
    bracket_open,   // "["
    negation,       // "^" behind "["
    range,          // "-" in a bracket
    bracket_close,  // "]"
    line_end,       // "$" that anchors
    end,            // of the pattern
    cut_escape,     // a backslash with nothing behind it
};

// What a character means depends on the token before it and on what is open
// around it. One token is read ahead: whoever takes a token first updates
// in_bracket and open_groups, then advances.
struct rxp_scanner {
    const char *text;  // the pattern behind a leading "!"
    const char *at;    // behind the current token
    char delimiter;    // null for none
    bool in_bracket;
    int open_groups;

    rxp_token kind;
    char character;        // of a literal; "*" or "+"
    rxp_opcode opcode;     // of an item
    unsigned char number;  // of a sub-match item, else rxp_unused
};

// Replaces the current token by the next one.
void rxp_advance(rxp_scanner *scanner);

}  // namespace tovan

#endif
