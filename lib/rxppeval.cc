// rxppeval.cc: where a regular expression matches.
#include "rxpcomp.h"

#include "ident.h"
#include "private_rxp.h"
#include "private_rxprun.h"

#include <string.h>

using tovan::rxp_machine;

namespace {

constexpr int not_a_program = -6;

// The next position from `from` on at which the first state can match; null
// when there is none.
const char *next_candidate(const tovan::rxp_state &first, const char *from) {
    if (first.opcode != tovan::rxp_literal) return from;
    return strchr(from, first.argument);
}

// The leftmost position at which the program matches; null when none does.
const char *find_match(rxp_machine *m) {
    const tovan::rxp_state &first = m->states[m->states[0].argument];
    if (first.opcode == tovan::rxp_subject_start)
        return rxp_attempt(m, m->subject) ? m->subject : nullptr;
    const char *position = next_candidate(first, m->subject);
    while (position != nullptr) {
        if (rxp_attempt(m, position)) return position;
        if (*position == '\0') break;
        position = next_candidate(first, position + 1);
    }
    return nullptr;
}

bool matches_somewhere(const char *subject, const unsigned char *program) {
    rxp_machine machine;  // its tables are left unset
    rxp_start(&machine, subject, program, nullptr);
    const char *start = find_match(&machine);
    rxp_stop(&machine);
    if (start == nullptr) return false;
    matches.pair[0].start = start;
    // Chosen: nothing recorded, nothing spanned.
    if (machine.best == nullptr) matches.pair[0].end = start;
    return true;
}

}  // namespace

// The last match. Written by rxppeval().
constinit rxpmatch matches = {};

int rxppeval(const char *subject, const unsigned char *program) {
    if (!tovan::rxp_is_program(program)) return not_a_program;
    bool is_inverted = program[3] == tovan::rxp_inverted;
    matches.count = 0;
    matches.pair[0] = {};
    return matches_somewhere(subject, program) != is_inverted ? 1 : 0;
}

int rxpeval(const char *subject) {
    return rxppeval(subject, rxpbuf);
}

int rxpcaret(const unsigned char *program) {
    if (!tovan::rxp_is_program(program)) return -1;
    const tovan::rxp_state *states = tovan::rxp_states(program);
    return states[states[0].argument].opcode == tovan::rxp_subject_start;
}

int rxpinvert(const unsigned char *program) {
    if (!tovan::rxp_is_program(program)) return -1;
    return program[3] == tovan::rxp_inverted;
}

TOVAN_IDENT(rxppeval, "8.4", "26/11/21")
