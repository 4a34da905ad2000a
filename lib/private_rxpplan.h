// private_rxpplan.h (private): what is worth knowing about a program that is
// run again and again.
// Builds on: private_rxp.h, private_rxpfind.h, private_rxpshape.h.
#ifndef TOVAN_PRIVATE_RXPPLAN_H
#define TOVAN_PRIVATE_RXPPLAN_H

#include "private_rxp.h"
#include "private_rxpfind.h"
#include "private_rxpshape.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace [[gnu::visibility("hidden")]] tovan {

// What can come from a state on without anything consumed.
struct rxp_outlook {
    rxp_set bytes;  // those that may be consumed first; 0: the subject's end
    bool ends;      // the match may end
    bool writes;    // a register may be written
};

// A text that every match contains, with what stands around it.
struct rxp_needle {
    static constexpr int max_length = 32;
    int length;  // 0: none is known
    char text[max_length];
    bool is_first;   // may start the match: then anything may stand before
    rxp_set before;  // else one of these
    rxp_set after;   // one of these; 0: the end of the subject
    int rare;        // where in the text the pair stands that is looked for
    rxp_pair pair;
};

// What filters can tell about a subject or about a start in it.
struct rxp_filters {
    rxp_set first;      // bytes that a match may start with; 0: may be empty
    rxp_set second;     // bytes that may follow the first one
    bool has_pair;      // both are few
    rxp_pair pair;      // then these
    bool is_at_end;     // a match reaches the end of the subject
    rxp_set last;       // then one of these is the last byte; 0: none need be
    rxp_needle tail;    // the text that ends the subject
    rxp_needle needle;  // a text somewhere
};

// How a state is run quickly.
enum class rxp_quick : unsigned char {
    byte,   // one byte of a set
    run,    // a loop over bytes of a set that stops at the first other byte
    fork,   // any other branch
    other,  // by its opcode
};

struct rxp_plan {
    unsigned char program[1537];  // that this is about
    size_t length;                // with its final null; 0: none
    bool is_made;                 // what follows is filled in
    bool is_plain;      // no back-references, and no loop ends a match by
                        // standing still; else only the shape is filled in
    bool is_regular;    // can be run as an automaton
    bool is_anchored;   // starts with "^"
    bool is_literal;    // is nothing but the needle
    bool looks_around;  // has states that look at what is before a position
    bool is_too_large;  // the automaton would be
    bool may_be_quick;  // has no loops that stand still
    unsigned pause;     // evaluations without a quick search after the last
                        // one that gave up
    unsigned pause_left;
    uint64_t stamp;  // no other plan has had it; not 0
    rxp_shape shape;
    rxp_quick quick[rxp_max_states];
    rxp_set bytes[rxp_max_states];            // that a state takes, or a run
    rxp_outlook next[rxp_max_states];         // of a fork
    rxp_outlook alternative[rxp_max_states];  // of a fork
    int first_run;   // that attempts begin with; 0: none
    int first_byte;  // the one before it; 0: none
    rxp_filters filters;
};

// The plan that was asked for last.
extern rxp_plan *rxp_last_plan;

// As rxp_plan_for(), for any plan but the last one.
rxp_plan *rxp_choose_plan(const unsigned char *program);

inline uint64_t rxp_word_at(const unsigned char *bytes) {
    uint64_t word;
    memcpy(&word, bytes, sizeof word);
    return word;
}

// A program with less ranges is shorter, but its states differ before the last
// word begins: no byte behind it is looked at.
inline bool rxp_is_about(const rxp_plan &plan, const unsigned char *program) {
    if (plan.length == 0 || plan.program[2] != program[2]) return false;
    size_t last = plan.length - sizeof(uint64_t);
    for (size_t i = 0; i < last; i += sizeof(uint64_t)) {
        if (rxp_word_at(plan.program + i) != rxp_word_at(program + i))
            return false;
    }
    return rxp_word_at(plan.program + last) == rxp_word_at(program + last);
}

// The plan of a program that is run for the second time or more often.
//   result    null the first time
//   owner     library until the next call
inline rxp_plan *rxp_plan_for(const unsigned char *program) {
    bool is_last = rxp_is_about(*rxp_last_plan, program);
    return is_last && rxp_last_plan->is_made ? rxp_last_plan
                                             : rxp_choose_plan(program);
}

// ---- between the sources of a plan --------------------------------------

// The states reached from each state without consuming, itself included.
using rxp_reach = rxp_set[rxp_max_states];

// The bytes of which a state consumes one first; empty when it consumes none.
rxp_set rxp_first_bytes(const unsigned char *program, const rxp_state &state);

rxp_outlook rxp_look(const unsigned char *program, const rxp_set &reached);

// The first state from here on that does anything but write registers.
int rxp_straight_end(const rxp_state *states, int number);

void rxp_find_filters(rxp_plan *plan, const rxp_reach &reach);

// ---- filters (rxpfilter.cc) ---------------------------------------------

// Whether the subject [start, end) may match.
bool rxp_may_match(const rxp_filters &filters, const char *start,
                   const char *end);

// The next place of a needle; null when there is none.
const char *rxp_find_needle(const rxp_needle &needle, const char *start,
                            const char *end);

// The next position from `from` on at which a match may start; null when
// there is none.
const char *rxp_find_start(const rxp_filters &filters, const char *from,
                           const char *end);

inline bool rxp_overlap(const rxp_set &a, const rxp_set &b) {
    return ((a.words[0] & b.words[0]) | (a.words[1] & b.words[1]) |
            (a.words[2] & b.words[2]) | (a.words[3] & b.words[3])) != 0;
}

inline void rxp_add_all(rxp_set *set, const rxp_set &more) {
    for (int i = 0; i < 4; i++)
        set->words[i] |= more.words[i];
}

constexpr rxp_set rxp_any_byte = {
    {~uint64_t{0}, ~uint64_t{0}, ~uint64_t{0}, ~uint64_t{0}}};

}  // namespace tovan

#endif
