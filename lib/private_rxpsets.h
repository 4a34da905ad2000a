// private_rxpsets.h (private): the states of an automaton.
// Builds on: private_rxpplan.h.
//
// A part of rxpauto.cc, which alone includes it: a step is taken at each byte.
#ifndef TOVAN_PRIVATE_RXPSETS_H
#define TOVAN_PRIVATE_RXPSETS_H

#include "private_rxpplan.h"

#include <stdint.h>
#include <string.h>

namespace [[gnu::visibility("hidden")]] tovan {
namespace {

constexpr unsigned max_sets = 64;  // bits of a mark

// What stands before a position.
enum class before : unsigned char { nothing, identifier, other };

struct state_set {
    rxp_set states;
    before context;
    bool floats;
};

// Steps of the table.
enum : unsigned char {
    unknown = 0,
    dead = 1,
    to_the_end = 2,    // any rest of the subject matches
    first_set = 4,     // the number of a set comes on top
    accepting = 0x80,  // a match may end here, before the byte
};

// The automaton of one plan. Filled as it runs; emptied for another plan.
struct automaton_state {
    uint64_t stamp;  // of the plan; 0: none
    unsigned n_sets;
    bool is_full;
    state_set sets[max_sets];
    unsigned char table[max_sets][256];
};
constinit automaton_state automaton = {};

// ---- sets ---------------------------------------------------------------

bool is_same(const state_set &a, const state_set &b) {
    return a.context == b.context && a.floats == b.floats &&
           memcmp(&a.states, &b.states, sizeof a.states) == 0;
}

// The step that leads to a set.
unsigned char step_to(const state_set &set) {
    if (rxp_is_empty(set.states) && !set.floats) return dead;
    unsigned number = 0;
    while (number < automaton.n_sets && !is_same(automaton.sets[number], set))
        number++;
    if (number == max_sets) {
        automaton.is_full = true;
        return dead;
    }
    if (number == automaton.n_sets) {
        automaton.n_sets++;
        automaton.sets[number] = set;
        memset(automaton.table[number], unknown, 256);
    }
    return static_cast<unsigned char>(first_set + number);
}

before context_behind(const rxp_plan &plan, unsigned char byte) {
    bool is_identifier = (re_type[byte] & re_identifier) != 0;
    return is_identifier && plan.looks_around ? before::identifier
                                              : before::other;
}

// ---- one step -----------------------------------------------------------

// All that a byte does to a set.
struct step {
    const rxp_plan *plan;
    const rxp_state *states;
    before context;
    unsigned char byte;
    rxp_set seen;
    rxp_set behind;  // states that the byte leads to
    bool accepts;
    bool reaches_the_end;
    int n_waiting;
    unsigned char waiting[2 * rxp_max_states + 1];
};

bool stands(const step &s, unsigned char opcode) {
    bool is_start = (re_type[s.byte] & re_identifier_start) != 0;
    bool is_inside = (re_type[s.byte] & re_identifier) != 0;
    switch (opcode) {
        case rxp_identifier_start:
            return is_start && s.context != before::identifier;
        case rxp_identifier_end:
            return !is_inside && s.context == before::identifier;
        case rxp_subject_start:
            return s.context == before::nothing;
        case rxp_subject_end:
            return s.byte == 0;
        default:
            return true;
    }
}

void wait_for(step *s, unsigned char number) {
    if (rxp_has(s->seen, number)) return;
    rxp_add(&s->seen, number);
    s->waiting[s->n_waiting++] = number;
}

void follow(step *s, unsigned char number) {
    const rxp_state &state = s->states[number];
    switch (state.opcode) {
        case rxp_end:
            s->accepts = true;
            return;
        case rxp_rest:
            s->reaches_the_end = true;
            return;
        case rxp_branch:
            wait_for(s, state.next);
            wait_for(s, state.alternative);
            return;
        case rxp_white_run_or_none:
            if ((re_type[s->byte] & re_space) != 0)
                rxp_add(&s->behind, number);
            else
                wait_for(s, state.next);
            return;
    }
    if (!rxp_may_stand(state)) {
        if (rxp_has(s->plan->bytes[number], s->byte))
            rxp_add(&s->behind, state.next);
    } else if (stands(*s, state.opcode)) {
        wait_for(s, state.next);
    }
}

unsigned char made_step(const rxp_plan *plan, const state_set &from,
                        unsigned char byte) {
    step s;  // its stack is left unset
    s.plan = plan;
    s.states = rxp_states(plan->program);
    s.context = from.context;
    s.byte = byte;
    s.seen = {};
    s.behind = {};
    s.accepts = false;
    s.reaches_the_end = false;
    s.n_waiting = 0;
    rxp_for_each(from.states, [&](unsigned number) {
        wait_for(&s, static_cast<unsigned char>(number));
    });
    if (from.floats) wait_for(&s, s.states[0].argument);
    while (s.n_waiting > 0)
        follow(&s, s.waiting[--s.n_waiting]);

    if (s.reaches_the_end) return to_the_end | accepting;
    unsigned char leads_to = dead;
    if (byte != 0) {
        leads_to =
            step_to({s.behind, context_behind(*plan, byte), from.floats});
    }
    return s.accepts ? leads_to | accepting : leads_to;
}

// The step from a set, made now if it was not made before.
unsigned char step_from(const rxp_plan *plan, unsigned set,
                        unsigned char byte) {
    unsigned char known = automaton.table[set][byte];
    if (known != unknown) return known;
    unsigned char made = made_step(plan, automaton.sets[set], byte);
    if (!automaton.is_full) automaton.table[set][byte] = made;
    return made;
}

bool leads_on(unsigned char step) {
    return (step & ~accepting) >= first_set;
}

unsigned set_behind(unsigned char step) {
    return (step & ~accepting) - unsigned{first_set};
}

}  // namespace
}  // namespace tovan

#endif
