// rxpdump.cc: printing a compiled regular expression.
#include "rxpcomp.h"

#include "ident.h"
#include "private_rxp.h"

#include <stdio.h>

using tovan::rxp_state;

namespace {

constexpr const char *ops[] = {
#define TOVAN_RXP_NAME(name, text) text,
    TOVAN_RXP_OPCODES(TOVAN_RXP_NAME)
#undef TOVAN_RXP_NAME
};

const char *opcode_name(unsigned char opcode) {
    return opcode < tovan::rxp_opcodes ? ops[opcode] : ops[tovan::rxp_none];
}

void print_argument(const rxp_state &state) {
    switch (state.opcode) {
        case tovan::rxp_literal:
        case tovan::rxp_folded:
        case tovan::rxp_up_to_literal:
            printf("'%c'\t", state.argument);
            break;
        case tovan::rxp_same_text:
        case tovan::rxp_open:
        case tovan::rxp_close:
        case tovan::rxp_in_ranges:
        case tovan::rxp_not_in_ranges:
        case tovan::rxp_up_to_same_text:
            printf("%d\t", state.argument);
            break;
        default:
            printf("?\t");
    }
}

void print_class(const unsigned char *program, const rxp_state &state) {
    printf("[%s", state.opcode == tovan::rxp_not_in_ranges ? "^" : "");
    const unsigned char *pair = rxp_class_pairs(program, state);
    for (int i = 0; i < state.argument; i++, pair += 2) {
        printf("%c", pair[0]);
        if (pair[0] != pair[1]) printf("-%c", pair[1]);
    }
    printf("]");
}

void print_alternative(const unsigned char *program, const rxp_state &state) {
    if (state.opcode == tovan::rxp_branch &&
        state.alternative != tovan::rxp_unused) {
        printf("%d", state.alternative);
    } else if (state.opcode == tovan::rxp_in_ranges ||
               state.opcode == tovan::rxp_not_in_ranges) {
        print_class(program, state);
    } else {
        printf("?");
    }
}

}  // namespace

void rxpdump(const unsigned char *program) {
    const rxp_state *states = tovan::rxp_states(program);
    printf("0:\tSTA\t%d\t%d\t%sinvert\n", tovan::rxp_first_state(program),
           tovan::rxp_end_state(program),
           states->alternative == tovan::rxp_inverted ? "" : "don't ");
    int k = 1;
    for (; states[k].opcode != tovan::rxp_end; k++) {
        printf("%d:\t%s\t", k, opcode_name(states[k].opcode));
        print_argument(states[k]);
        printf("%d\t", states[k].next);
        print_alternative(program, states[k]);
        printf("\n");
    }
    const unsigned char *summary = tovan::rxp_summary(program);
    printf("%d:\tEND, minnop=%d, maxnop=%d\n", k, summary[0], summary[1]);
}

TOVAN_IDENT(rxpdump, "8.4", "26/11/21")
