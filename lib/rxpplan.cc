// rxpplan.cc: plans of programs that are run again and again.
//
// A tool compiles a pattern once and runs it on every line. Looking at the
// program takes longer than one run of it, so that it waits for the second
// one. Programs arrive in any buffer: a plan carries a copy of its program,
// and a few dozen bytes are compared at each call.
//
// A loop like that of `[a-z]*=` is a run: as long as a letter comes, what is
// behind the loop fails at once, and leaving it anywhere but at the first
// other byte is of no use. What would be tried in between leaves nothing
// behind but registers, and those are written once more at the end of the run.
//
// If an attempt begins with a run and fails, so does every attempt that starts
// within that run: it comes to the same end of the run, and from there all is
// the same.
#include "rxpcomp.h"

#include "ident.h"
#include "private_rxp.h"
#include "private_rxpauto.h"
#include "private_rxpplan.h"
#include "private_rxpshape.h"

#include <string.h>

using tovan::rxp_outlook;
using tovan::rxp_plan;
using tovan::rxp_quick;
using tovan::rxp_set;
using tovan::rxp_state;

namespace {

// Chosen: programs are told apart by a few bytes, and two that share a place
// drive each other out. A tool with a list of patterns keeps most plans.
constexpr unsigned n_plans = 8;
constinit rxp_plan plans[n_plans] = {};
constinit uint64_t n_stamps = 0;

unsigned place_of(const unsigned char *program) {
    unsigned sum =
        program[2] * 5u + program[5] * 7u + program[9] * 3u + program[10];
    return sum % n_plans;
}

void keep_copy(rxp_plan *plan, const unsigned char *program) {
    const unsigned char *ranges = tovan::rxp_summary(program) + 2;
    size_t length = static_cast<size_t>(ranges - program) + 1 +
                    strnlen(reinterpret_cast<const char *>(ranges),
                            2 * tovan::rxp_max_pairs);
    plan->length = length < sizeof plan->program ? length : 0;
    plan->is_made = false;
    memcpy(plan->program, program, plan->length);
}

// ---- what states consume ------------------------------------------------

template <typename Member>
rxp_set bytes_where(Member is_member) {
    rxp_set set = {};
    for (unsigned c = 1; c < 256; c++) {
        if (is_member(c)) rxp_add(&set, c);
    }
    return set;
}

rxp_set bytes_of_class(int classes) {
    return bytes_where(
        [classes](unsigned c) { return (re_type[c] & classes) != 0; });
}

// All bytes of the others, but never the null.
rxp_set all_but(const rxp_set &others) {
    rxp_set set;
    for (int i = 0; i < 4; i++)
        set.words[i] = ~others.words[i];
    set.words[0] &= ~uint64_t{1};
    return set;
}

rxp_set bytes_in_ranges(const unsigned char *program, const rxp_state &state) {
    rxp_set set = {};
    const unsigned char *pair = rxp_class_pairs(program, state);
    for (int i = 0; i < state.argument; i++, pair += 2) {
        for (unsigned c = pair[0]; c <= pair[1]; c++)
            rxp_add(&set, c);
    }
    return set;
}

rxp_set both_cases(unsigned char letter) {
    rxp_set set = {};
    rxp_add(&set, letter);
    bool is_lower = (re_type[letter] & tovan::re_lower) != 0;
    if (is_lower) rxp_add(&set, letter - 32u);
    return set;
}

// ---- how states run -----------------------------------------------------

bool takes_one_byte(unsigned char opcode) {
    switch (opcode) {
        case tovan::rxp_literal:
        case tovan::rxp_folded:
        case tovan::rxp_any:
        case tovan::rxp_unclassed:
        case tovan::rxp_digit:
        case tovan::rxp_not_white:
        case tovan::rxp_in_ranges:
        case tovan::rxp_not_in_ranges:
            return true;
        default:
            return false;
    }
}

// A loop over bytes may be run through at once if it cannot be left before
// the first other byte, or if leaving it earlier gives an end less far.
bool is_run(const rxp_plan &plan, int branch) {
    const rxp_state *states = tovan::rxp_states(plan.program);
    int item = states[branch].alternative;
    if (plan.quick[item] != rxp_quick::byte || states[item].next != branch)
        return false;
    const rxp_state &behind =
        states[rxp_straight_end(states, states[branch].next)];
    if (behind.opcode == tovan::rxp_end) return true;
    const rxp_outlook &next = plan.next[branch];
    if (next.ends || rxp_overlap(next.bytes, plan.bytes[item])) return false;
    return !next.writes || takes_one_byte(behind.opcode) ||
           behind.opcode == tovan::rxp_subject_end;
}

// The run that all attempts begin with, behind one byte or at once.
void find_first_run(rxp_plan *plan) {
    const rxp_state *states = tovan::rxp_states(plan->program);
    int number = rxp_straight_end(states, states[0].argument);
    plan->first_byte = 0;
    if (plan->quick[number] == rxp_quick::byte) {
        plan->first_byte = number;
        number = states[number].next;
    }
    plan->first_run = plan->quick[number] == rxp_quick::run ? number : 0;
}

void plan_branch(rxp_plan *plan, int branch, const tovan::rxp_reach &reach) {
    const rxp_state &state = tovan::rxp_states(plan->program)[branch];
    plan->next[branch] = rxp_look(plan->program, reach[state.next]);
    plan->alternative[branch] =
        rxp_look(plan->program, reach[state.alternative]);
    plan->quick[branch] = rxp_quick::fork;
    if (is_run(*plan, branch)) {
        plan->quick[branch] = rxp_quick::run;
        plan->bytes[branch] = plan->bytes[state.alternative];
    }
}

// Bytes first: a run looks at its item.
void plan_states(rxp_plan *plan, const tovan::rxp_reach &reach) {
    const rxp_state *states = tovan::rxp_states(plan->program);
    int end = tovan::rxp_end_state(plan->program);
    for (int i = 1; i <= end; i++) {
        plan->quick[i] = takes_one_byte(states[i].opcode) ? rxp_quick::byte
                                                          : rxp_quick::other;
        plan->bytes[i] = rxp_first_bytes(plan->program, states[i]);
    }
    for (int i = 1; i < end; i++) {
        if (states[i].opcode == tovan::rxp_branch) plan_branch(plan, i, reach);
    }
    find_first_run(plan);
}

// ---- where states lead --------------------------------------------------

rxp_set reached_from(const rxp_state *states, int first) {
    unsigned char waiting[2 * tovan::rxp_max_states + 1];
    int n_waiting = 0;
    rxp_set reached = {};
    waiting[n_waiting++] = static_cast<unsigned char>(first);
    while (n_waiting > 0) {
        unsigned char number = waiting[--n_waiting];
        if (rxp_has(reached, number)) continue;
        rxp_add(&reached, number);
        const rxp_state &state = states[number];
        // Behind "$" there is only the end.
        if (!rxp_may_stand(state) || state.opcode == tovan::rxp_subject_end)
            continue;
        waiting[n_waiting++] = state.next;
        if (state.opcode == tovan::rxp_branch)
            waiting[n_waiting++] = state.alternative;
    }
    return reached;
}

bool looks_around(const rxp_plan &plan) {
    const rxp_state *states = tovan::rxp_states(plan.program);
    int end = tovan::rxp_end_state(plan.program);
    for (int i = 1; i < end; i++) {
        unsigned char opcode = states[i].opcode;
        if (opcode == tovan::rxp_identifier_start ||
            opcode == tovan::rxp_identifier_end ||
            opcode == tovan::rxp_subject_start)
            return true;
    }
    return false;
}

void make_plan(rxp_plan *plan) {
    const rxp_state *states = tovan::rxp_states(plan->program);
    rxp_find_shape(&plan->shape, plan->program);
    plan->is_made = true;
    plan->is_plain =
        !plan->shape.has_references && !plan->shape.has_standing_loops;
    plan->is_anchored = rxpcaret(plan->program) == 1;
    plan->stamp = ++n_stamps;
    if (!plan->is_plain) return;

    tovan::rxp_reach reach;
    int end = tovan::rxp_end_state(plan->program);
    for (int i = 1; i <= end; i++)
        reach[i] = reached_from(states, i);
    plan_states(plan, reach);
    rxp_find_filters(plan, reach);
    plan->looks_around = looks_around(*plan);
    plan->is_regular = rxp_is_regular(plan);
    plan->is_too_large = false;
    plan->may_be_quick = !plan->shape.has_empty_loops;
    plan->pause = 0;
    plan->pause_left = 0;
}

}  // namespace

rxp_set tovan::rxp_first_bytes(const unsigned char *program,
                               const rxp_state &state) {
    rxp_set set = {};
    switch (state.opcode) {
        case rxp_literal:
            rxp_add(&set, state.argument);
            return set;
        case rxp_folded:
            return both_cases(state.argument);
        case rxp_any:
        case rxp_up_to_literal:
            return all_but({});
        case rxp_unclassed:
            return bytes_where([](unsigned c) { return re_type[c] == 0; });
        case rxp_digit:
            return bytes_of_class(re_digit);
        case rxp_white_run:
        case rxp_white_run_or_none:
            return bytes_of_class(re_space);
        case rxp_not_white:
            return all_but(bytes_of_class(re_space));
        case rxp_identifier:
            return bytes_of_class(re_identifier_start);
        case rxp_in_ranges:
            return bytes_in_ranges(program, state);
        case rxp_not_in_ranges:
            return all_but(bytes_in_ranges(program, state));
        default:
            return set;
    }
}

rxp_outlook tovan::rxp_look(const unsigned char *program,
                            const rxp_set &reached) {
    const rxp_state *states = rxp_states(program);
    rxp_outlook outlook = {{}, false, false};
    rxp_for_each(reached, [&](unsigned number) {
        const rxp_state &state = states[number];
        rxp_add_all(&outlook.bytes, rxp_first_bytes(program, state));
        switch (state.opcode) {
            case rxp_end:
            case rxp_rest:
                outlook.ends = true;
                break;
            case rxp_open:
            case rxp_close:
                outlook.writes = true;
                break;
            case rxp_subject_end:
                rxp_add(&outlook.bytes, 0);
                break;
        }
    });
    return outlook;
}

int tovan::rxp_straight_end(const rxp_state *states, int number) {
    for (;;) {
        const rxp_state &state = states[number];
        bool only_writes = state.opcode == rxp_open ||
                           state.opcode == rxp_close ||
                           state.opcode == rxp_nothing;
        if (!only_writes) return number;
        number = state.next;
    }
}

constinit tovan::rxp_plan *tovan::rxp_last_plan = plans;

rxp_plan *tovan::rxp_choose_plan(const unsigned char *program) {
    rxp_plan *plan = &plans[place_of(program)];
    if (!rxp_is_about(*plan, program)) {
        keep_copy(plan, program);
        return nullptr;
    }
    if (!plan->is_made) make_plan(plan);
    rxp_last_plan = plan;
    return plan;
}

TOVAN_IDENT(rxpplan, "8.4", "26/11/21")
