// rxppeval.cc: where a regular expression matches.
#include "rxpcomp.h"

#include "ident.h"
#include "private_rxp.h"
#include "private_rxpauto.h"
#include "private_rxpmemo.h"
#include "private_rxpplan.h"
#include "private_rxpquick.h"
#include "private_rxprun.h"

#include <string.h>

using tovan::rxp_answer;
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

// Kept out of the way of the quick search, which needs no such tables.
[[gnu::noinline]] bool search(const char *subject, const unsigned char *program,
                              const tovan::rxp_plan *plan) {
    rxp_machine machine;  // its tables are left unset
    rxp_start(&machine, subject, program,
              plan != nullptr ? &plan->shape : nullptr);
    // The quick ways have given up: ways meet.
    if (plan != nullptr && plan->is_plain) rxp_remember(&machine);
    const char *start = find_match(&machine);
    rxp_stop(&machine);
    if (start == nullptr) return false;
    matches.pair[0].start = start;
    // Chosen: nothing recorded, nothing spanned.
    if (machine.found.best == nullptr) matches.pair[0].end = start;
    return true;
}

void clear_matches() {
    matches.count = 0;
    matches.pair[0] = {};
}

// After a quick search that gave up, the next ones are left out, more of them
// each time: one hard line among many costs little, many of them as well.
rxp_answer search_quickly(tovan::rxp_plan *plan, const char *subject) {
    constexpr unsigned longest_pause = 63;
    if (!plan->may_be_quick) return rxp_answer::gave_up;
    if (plan->pause_left > 0) {
        plan->pause_left--;
        return rxp_answer::gave_up;
    }
    rxp_answer answer = rxp_quick_search(plan, subject);
    if (answer != rxp_answer::gave_up) {
        plan->pause = 0;
        return answer;
    }
    if (plan->pause < longest_pause) plan->pause = 2 * plan->pause + 1;
    plan->pause_left = plan->pause;
    clear_matches();
    return rxp_answer::gave_up;
}

// Looks for a match in the ways that a plan opens, the quickest one first.
rxp_answer search_by_plan(tovan::rxp_plan *plan, const char *subject) {
    rxp_answer answer = search_quickly(plan, subject);
    if (answer != rxp_answer::gave_up) return answer;
    const char *end = subject + strlen(subject);
    if (!rxp_may_match(plan->filters, subject, end))
        return rxp_answer::no_match;
    if (!plan->is_regular || plan->is_too_large) return rxp_answer::gave_up;
    answer = rxp_automaton_search(plan, subject, end);
    plan->is_too_large = answer == rxp_answer::gave_up;
    return answer;
}

bool matches_somewhere(const char *subject, const unsigned char *program) {
    tovan::rxp_last_cost = {};
    clear_matches();
    tovan::rxp_plan *plan = tovan::rxp_plan_for(program);
    if (plan != nullptr && plan->is_plain) {
        rxp_answer answer = search_by_plan(plan, subject);
        if (answer == rxp_answer::match) return true;
        if (answer == rxp_answer::no_match) return false;
    }
    return search(subject, program, plan);
}

}  // namespace

// The last match. Written by rxppeval().
constinit rxpmatch matches = {};

int rxppeval(const char *subject, const unsigned char *program) {
    if (!tovan::rxp_is_program(program)) return not_a_program;
    bool is_inverted = program[3] == tovan::rxp_inverted;
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
