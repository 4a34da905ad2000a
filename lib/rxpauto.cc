// rxpauto.cc: running a program as an automaton.
//
// A program without sub-matches is asked for two positions only: the leftmost
// start and the farthest end. Which ways lead there does not matter, so that
// all ways may be followed at once: a state of the automaton is the set of
// program states that the ways have come to, and a byte of the subject leads
// from one set to the next.
//
//     <a|ab>*c    a: behind "a", in "ab"      b: loop      c: end
//
// Sets are made as they are met, and what a byte leads to is kept in a table.
// States that look at both sides of a position are decided when the byte
// behind it is known; what is before it is a part of the automaton's state.
//
// A floating automaton starts anew at every position. It tells in one pass
// whether there is any match. Then attempts are made from the left. One that
// comes to a state in which an earlier one has been at the same position fails
// as that one did: `marks` has a word of state bits for every eighth position.
//
// Of a program with sub-matches only the first pass is made: what registers
// hold in the end depends on the ways.
//
// Not handled are programs with states that consume more than one byte at a
// time, and those that need more than 64 sets.
#include "rxpcomp.h"

#include "ident.h"
#include "private_rxp.h"
#include "private_rxpauto.h"
#include "private_rxpplan.h"
#include "private_rxpquick.h"
#include "private_rxprun.h"
#include "private_rxpsets.h"

#include <stdlib.h>
#include <string.h>

using namespace tovan;

namespace {

// One evaluation.
struct search {
    const rxp_plan *plan;
    const char *subject;
    const char *end;
    uint64_t steps;
    uint64_t *marks;  // null until an attempt is long
    bool has_failed;  // the automaton is full, or there is no room for marks
};

unsigned char byte_at(const char *position) {
    return static_cast<unsigned char>(*position);
}

// ---- runs ---------------------------------------------------------------

before context_at(const search &s, const char *position) {
    if (!s.plan->looks_around) return before::other;
    if (position == s.subject) return before::nothing;
    return context_behind(*s.plan, byte_at(position - 1));
}

// The set in which a run from a position starts.
unsigned first_set_at(const search &s, const char *position, bool floats) {
    state_set first = {{}, context_at(s, position), floats};
    rxp_add(&first.states, tovan::rxp_states(s.plan->program)[0].argument);
    unsigned char step = step_to(first);
    return leads_on(step) ? set_behind(step) : 0;
}

// Whether there is a match anywhere.
bool is_anywhere(search *s) {
    unsigned set = first_set_at(*s, s->subject, !s->plan->is_anchored);
    const char *p = s->subject;
    unsigned char step = step_from(s->plan, set, byte_at(p));
    while (leads_on(step) && step < accepting && !automaton.is_full) {
        p++;
        step = step_from(s->plan, set_behind(step), byte_at(p));
    }
    s->steps += static_cast<uint64_t>(p - s->subject) + 1;
    return (step & accepting) != 0;
}

constexpr ptrdiff_t mark_distance = 8;
constexpr ptrdiff_t long_attempt = 64;

size_t count_marks(const search &s) {
    return static_cast<size_t>((s.end - s.subject) / mark_distance) + 1;
}

// Whether an attempt has been in this set here before. Only far from its start
// is an attempt worth a mark.
bool was_here(search *s, const char *start, const char *position,
              unsigned set) {
    ptrdiff_t offset = position - s->subject;
    if (offset % mark_distance != 0) return false;
    if (s->marks == nullptr) {
        if (position - start < long_attempt) return false;
        s->marks =
            static_cast<uint64_t *>(calloc(count_marks(*s), sizeof(uint64_t)));
        if (s->marks == nullptr) {
            s->has_failed = true;
            return true;
        }
    }
    uint64_t &mark = s->marks[offset / mark_distance];
    uint64_t bit = uint64_t{1} << set;
    bool was_set = (mark & bit) != 0;
    mark |= bit;
    return was_set;
}

// The farthest end of a match that starts here; null when there is none.
const char *farthest_end(search *s, const char *start) {
    unsigned set = first_set_at(*s, start, false);
    const char *best = nullptr;
    for (const char *p = start; !automaton.is_full; p++) {
        unsigned char step = step_from(s->plan, set, byte_at(p));
        s->steps++;
        if ((step & accepting) != 0) best = p;
        if ((step & ~accepting) == to_the_end) return s->end;
        if (!leads_on(step)) break;
        set = set_behind(step);
        if (best == nullptr && was_here(s, start, p + 1, set)) break;
    }
    return best;
}

rxp_answer attempt(search *s, const char *start) {
    const char *end = farthest_end(s, start);
    if (end == nullptr) return rxp_answer::no_match;
    matches.pair[0].start = start;
    matches.pair[0].end = end;
    return rxp_answer::match;
}

rxp_answer find_match(search *s) {
    if (!is_anywhere(s)) return rxp_answer::no_match;
    if (s->plan->shape.n_submatches > 0) return rxp_answer::undecided;
    if (s->plan->is_anchored) return attempt(s, s->subject);
    const tovan::rxp_filters &filters = s->plan->filters;
    const char *from = rxp_find_start(filters, s->subject, s->end);
    while (from != nullptr && !s->has_failed && !automaton.is_full) {
        if (attempt(s, from) == rxp_answer::match) return rxp_answer::match;
        if (from == s->end) break;
        from = rxp_find_start(filters, from + 1, s->end);
    }
    return rxp_answer::no_match;
}

void empty_for(const rxp_plan *plan) {
    automaton.stamp = plan->stamp;
    automaton.n_sets = 0;
    automaton.is_full = false;
}

}  // namespace

bool tovan::rxp_is_regular(const rxp_plan *plan) {
    const rxp_state *states = rxp_states(plan->program);
    int end = rxp_end_state(plan->program);
    for (int i = 1; i < end; i++) {
        unsigned char opcode = states[i].opcode;
        if (opcode == rxp_white_run || opcode == rxp_identifier) return false;
    }
    // The rest of the subject is recorded only behind a branch.
    int number = states[0].argument;
    while (states[number].opcode != rxp_branch && number != end) {
        if (states[number].opcode == rxp_rest) return false;
        number = states[number].next;
    }
    return true;
}

rxp_answer tovan::rxp_automaton_search(const rxp_plan *plan,
                                       const char *subject, const char *end) {
    if (automaton.stamp != plan->stamp) empty_for(plan);
    search s = {plan, subject, end, 0, nullptr, false};
    rxp_answer answer = find_match(&s);
    rxp_last_cost.steps += s.steps;
    if (s.marks != nullptr)
        rxp_last_cost.heap += count_marks(s) * sizeof(uint64_t);
    free(s.marks);
    bool gave_up = s.has_failed || automaton.is_full;
    return gave_up ? rxp_answer::gave_up : answer;
}

TOVAN_IDENT(rxpauto, "8.4", "26/11/21")
