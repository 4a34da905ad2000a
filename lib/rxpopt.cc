// rxpopt.cc: the passes over a generated program.
#include "rxpcomp.h"

#include "ident.h"
#include "private_rxp.h"

using tovan::rxp_state;

namespace {

// Every next leads past the jumps that it meets. The links are read as they
// were before: a jump that this pass changes is still a jump to the others.
// Jumps only lead forward, so that targets are known from the end on.
void thread_jumps(rxp_state *states, int count) {
    unsigned char target[tovan::rxp_max_states];
    for (int i = count - 1; i > 0; i--) {
        target[i] = rxp_is_jump(states[i]) ? target[states[i].next]
                                           : static_cast<unsigned char>(i);
    }
    int end = count - 1;
    for (int i = 0; i < end; i++)
        states[i].next = target[states[i].next];
}

// The form of a looping "." by what its loop leaves to, or none.
tovan::rxp_opcode looping_any(const rxp_state &behind) {
    switch (behind.opcode) {
        case tovan::rxp_end:
        case tovan::rxp_subject_end:
            return tovan::rxp_rest;
        case tovan::rxp_literal:
            return tovan::rxp_up_to_literal;
        case tovan::rxp_same_text:
            return tovan::rxp_up_to_same_text;
        default:
            return tovan::rxp_none;
    }
}

void specialise_loops(rxp_state *states, int count) {
    for (int i = 1; i < count; i++) {
        if (states[i].opcode != tovan::rxp_any) continue;
        const rxp_state &loop = states[states[i].next];
        if (loop.opcode != tovan::rxp_branch || loop.alternative != i) continue;
        const rxp_state &behind = states[loop.next];
        tovan::rxp_opcode opcode = looping_any(behind);
        if (opcode == tovan::rxp_none) continue;
        states[i].opcode = opcode;
        if (opcode != tovan::rxp_rest) states[i].argument = behind.argument;
    }
}

// The lowest and highest branch state, behind the end state.
void summarise(rxp_state *states, int count) {
    unsigned char lowest = 1;
    unsigned char highest = 1;
    for (int i = count - 1; i > 0; i--) {
        if (states[i].opcode == tovan::rxp_branch) {
            lowest = static_cast<unsigned char>(i);
            if (highest == 1) highest = lowest;
        }
    }
    auto *summary = reinterpret_cast<unsigned char *>(states + count);
    summary[0] = lowest;
    summary[1] = highest;
}

}  // namespace

void tovan::rxp_optimise(rxp_state *states, int count) {
    thread_jumps(states, count);
    specialise_loops(states, count);
    summarise(states, count);
}

TOVAN_IDENT(rxpopt, "8.4", "26/11/21")
