// rxpshape.cc: which branches of a program can meet without consuming.
#include "rxpcomp.h"

#include "ident.h"
#include "private_rxp.h"
#include "private_rxpshape.h"

#include <string.h>

using tovan::rxp_set;
using tovan::rxp_shape;
using tovan::rxp_state;

bool tovan::rxp_may_stand(const rxp_state &state) {
    switch (state.opcode) {
        case rxp_identifier_end:
        case rxp_identifier_start:
        case rxp_same_text:
        case rxp_branch:
        case rxp_subject_start:
        case rxp_subject_end:
        case rxp_open:
        case rxp_close:
        case rxp_nothing:
        case rxp_white_run_or_none:
        case rxp_up_to_same_text:
            return true;
        default:
            return false;
    }
}

namespace {

// The branches that can be reached from a branch without consuming.
rxp_set reachable(const rxp_state *states, int branch) {
    unsigned char waiting[2 * tovan::rxp_max_states];
    int n_waiting = 0;
    rxp_set seen = {};
    rxp_set branches = {};
    auto leave = [&](const rxp_state &state) {
        waiting[n_waiting++] = state.next;
        if (state.opcode == tovan::rxp_branch)
            waiting[n_waiting++] = state.alternative;
    };
    leave(states[branch]);
    while (n_waiting > 0) {
        unsigned char number = waiting[--n_waiting];
        if (rxp_has(seen, number) || !rxp_may_stand(states[number])) continue;
        rxp_add(&seen, number);
        if (states[number].opcode == tovan::rxp_branch)
            rxp_add(&branches, number);
        leave(states[number]);
    }
    return branches;
}

void find_branches(rxp_shape *shape, const rxp_state *states, int end) {
    for (int i = 1; i < end; i++) {
        unsigned char opcode = states[i].opcode;
        if (opcode == tovan::rxp_open &&
            states[i].argument > shape->n_submatches)
            shape->n_submatches = states[i].argument;
        if (opcode == tovan::rxp_same_text ||
            opcode == tovan::rxp_up_to_same_text)
            shape->has_references = true;
        if (opcode != tovan::rxp_branch) continue;
        shape->meets[shape->n_branches] = reachable(states, i);
        if (rxp_has(shape->meets[shape->n_branches], static_cast<unsigned>(i)))
            rxp_add(&shape->empty_loops, static_cast<unsigned>(i));
        shape->ordinal[i] = static_cast<unsigned char>(shape->n_branches++);
    }
}

// States that make a loop which meets itself end the match.
bool is_of_no_width(unsigned char opcode) {
    switch (opcode) {
        case tovan::rxp_identifier_end:
        case tovan::rxp_identifier_start:
        case tovan::rxp_subject_start:
        case tovan::rxp_subject_end:
        case tovan::rxp_open:
        case tovan::rxp_close:
        case tovan::rxp_nothing:
            return true;
        default:
            return false;
    }
}

// Whether an empty loop may be met with such a state as the last one before.
bool has_standing_loops(const rxp_shape &shape, const rxp_state *states,
                        int end) {
    for (int i = 1; i < end; i++) {
        if (!is_of_no_width(states[i].opcode)) continue;
        unsigned char number = states[i].next;
        while (rxp_may_stand(states[number]) &&
               states[number].opcode != tovan::rxp_branch)
            number = states[number].next;
        if (rxp_has(shape.empty_loops, number)) return true;
    }
    return false;
}

}  // namespace

void tovan::rxp_find_shape(rxp_shape *shape, const unsigned char *program) {
    shape->n_branches = 0;
    shape->has_references = false;
    shape->n_submatches = 0;
    shape->empty_loops = {};
    find_branches(shape, rxp_states(program), rxp_end_state(program));
    shape->has_empty_loops = !rxp_is_empty(shape->empty_loops);
    shape->has_standing_loops =
        has_standing_loops(*shape, rxp_states(program), rxp_end_state(program));
    for (int i = 0; i < shape->n_branches; i++) {
        for (int word = 0; word < 4; word++)
            shape->meets[i].words[word] &= shape->empty_loops.words[word];
    }
}

TOVAN_IDENT(rxpshape, "8.4", "26/11/21")
