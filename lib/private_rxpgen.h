// private_rxpgen.h (private): generating the states of a program.
// Builds on: private_rxp.h, private_rxpscan.h.
//
// A part of rxpcomp.cc, which alone includes it.
#ifndef TOVAN_PRIVATE_RXPGEN_H
#define TOVAN_PRIVATE_RXPGEN_H

#include "private_rxp.h"
#include "private_rxpscan.h"

namespace [[gnu::visibility("hidden")]] tovan {
namespace {

constexpr int max_pattern = 255;  // bytes behind a leading "!"
constexpr int max_groups = max_pattern + 1;

// Entry of a term that has no factor yet; no state links to the header.
constexpr unsigned char no_entry = 0;

enum fault {
    bad_bracket = -1,
    bad_delimiter = -4,
    bad_item = -5,
    bad_reference = -6,
    too_long = -7,
    too_many_submatches = -8,
    unbalanced = -9,
    item_missing = -10,
};

// What "|" leaves to be linked when its group closes.
struct alternative {
    unsigned char entry;  // of the term before the "|"
    unsigned char jump;   // number of the jump; the branch comes next
};

struct group {
    short first;                   // number of its first state
    unsigned char entry;           // of the current term, or no_entry
    unsigned char base;            // number of its first sub-match
    signed char expected;          // sub-matches an alternative, -1: not known
    unsigned char open_outside;    // sub-matches open when it started
    unsigned short closed_before;  // bit k: sub-match k closed by then
    short alternatives_before;     // on the stack of alternatives
};

// Everything of one compilation but the states, which lie in rxpbuf. Their
// number is looked at once a token, which adds at most four: until then the
// room for ranges takes what is too much.
struct compiler {
    rxp_scanner scanner;
    rxp_state *states;
    int count;
    rxp_opcode literal_opcode;
    group groups[max_groups];
    alternative alternatives[max_pattern];
    int n_alternatives;
    int next_submatch;
    unsigned char open[rxp_max_submatch];  // numbers, innermost last
    int n_open;
    unsigned closed;  // bit k: sub-match k
    int n_pairs;
    unsigned char pairs[2 * rxp_max_pairs];
};
static_assert(sizeof rxpbuf >= 4 * (rxp_max_states + 4));

// A pair takes a byte of the pattern, two brackets a member: the range table
// cannot overflow, and its pairs fit behind the states.
static_assert(max_pattern <= rxp_max_pairs);

group &current_group(compiler *c) {
    return c->groups[c->scanner.open_groups];
}

// As a state keeps it.
unsigned char link_to(int state) {
    return static_cast<unsigned char>(state);
}

// Appends a state that leads to the one behind it, and returns its number.
int append(compiler *c, rxp_opcode opcode,
           unsigned char argument = rxp_unused) {
    int number = c->count++;
    c->states[number] = {opcode, argument, link_to(c->count), rxp_unused};
    return number;
}

// Ends a factor: a closure that follows it, and the entry of a term that
// starts with it.
void finish_factor(compiler *c, int first, unsigned char entry) {
    if (c->scanner.kind == rxp_token::closure) {
        int branch = append(c, rxp_branch);
        c->states[branch].alternative = entry;
        if (c->scanner.character == '*') {
            entry = link_to(branch);
            c->states[first - 1].next = entry;
        }
        rxp_advance(&c->scanner);
    }
    if (current_group(c).entry == no_entry) current_group(c).entry = entry;
}

int take_state(compiler *c, rxp_opcode opcode, unsigned char argument) {
    int state = append(c, opcode, argument);
    rxp_advance(&c->scanner);
    finish_factor(c, state, link_to(state));
    return state;
}

}  // namespace
}  // namespace tovan

#endif
