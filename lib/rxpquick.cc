// rxpquick.cc: running a program by its plan.
//
// The same search as that of rxprun.cc for the programs in which no loop can
// stand still, which are nearly all: branches need no guards, and a frame is
// an alternative and a position. The plan tells which ways a byte leaves open
// at a branch. With one way open there is no frame, and with a run there is
// not even a branch to go through for each byte.
//
// Filters come first. Most lines that a tool looks through are turned away by
// their last byte or by a text that they do not contain.
//
// There is no memory. A search that takes more steps than states times
// characters, or more frames than there is room for, gives up.
#include "rxpcomp.h"

#include "ident.h"
#include "private_rxp.h"
#include "private_rxpplan.h"
#include "private_rxpquick.h"
#include "private_rxprun.h"

#include <string.h>

using tovan::re_is;
using tovan::rxp_answer;
using tovan::rxp_outlook;
using tovan::rxp_plan;
using tovan::rxp_quick;
using tovan::rxp_state;

namespace {

constexpr int max_frames = 512;  // 8 KB of the processor's stack

struct frame {
    const char *position;
    const rxp_state *branch;
};

struct search {
    const rxp_plan *plan;
    const rxp_state *states;
    const char *subject;
    const char *end;
    int64_t patience;  // steps that may still be taken
    tovan::rxp_findings found;
    int n_frames;
    frame frames[max_frames];
};

// The way that is being tried.
struct way {
    const rxp_state *state;
    const char *position;
    bool inside;   // met a branch in this attempt
    bool matched;  // found an end in this attempt
};

unsigned byte_at(const char *position) {
    return static_cast<unsigned char>(*position);
}

void succeed(search *s, way *w) {
    rxp_record(&s->found, w->position);
    w->matched = true;
    if (w->position == s->end) s->n_frames = 0;
}

void take_rest(search *s, way *w) {
    w->matched = true;
    if (w->inside) rxp_record(&s->found, s->end);
    s->n_frames = 0;
}

bool is_open(const rxp_outlook &outlook, unsigned byte) {
    return outlook.ends || outlook.writes || rxp_has(outlook.bytes, byte);
}

bool give_up(search *s) {
    s->patience = 0;
    s->n_frames = 0;
    return false;
}

// Both ways of a fork may be open: then the alternative waits.
bool enter_fork(search *s, way *w, int number) {
    const rxp_state &fork = *w->state;
    unsigned byte = byte_at(w->position);
    bool next_is_open = is_open(s->plan->next[number], byte);
    bool other_is_open = fork.alternative != fork.next &&
                         is_open(s->plan->alternative[number], byte);
    w->inside = true;
    if (next_is_open && other_is_open) {
        if (s->n_frames == max_frames) return give_up(s);
        s->frames[s->n_frames++] = {w->position, &fork};
    }
    w->state = s->states + (next_is_open ? fork.next : fork.alternative);
    return next_is_open || other_is_open;
}

bool take_up_next(search *s, way *w) {
    if (s->n_frames == 0) return false;
    const frame &waiting = s->frames[--s->n_frames];
    w->position = waiting.position;
    w->state = s->states + waiting.branch->alternative;
    return true;
}

void pass_while(search *s, way *w, int classes) {
    const char *start = w->position;
    while (re_is(*w->position, classes))
        w->position++;
    s->patience -= w->position - start;
}

bool pass_up_to_literal(search *s, way *w) {
    if (w->position == s->end) return false;
    const char *from = w->position + 1;
    auto room = static_cast<size_t>(s->end - from);
    auto *place =
        static_cast<const char *>(memchr(from, w->state->argument, room));
    s->patience -= (place != nullptr ? place : s->end) - from;
    w->position = place;
    return place != nullptr;
}

// States that neither take one byte nor branch nor end.
bool pass_other(search *s, way *w) {
    const char *here = w->position;
    switch (w->state->opcode) {
        case tovan::rxp_white_run:
            if (!re_is(*here, tovan::re_space)) return false;
            [[fallthrough]];
        case tovan::rxp_white_run_or_none:
            pass_while(s, w, tovan::re_space);
            return true;
        case tovan::rxp_identifier:
            if (!tovan::rxp_starts_identifier(s->subject, here)) return false;
            pass_while(s, w, tovan::re_identifier);
            return true;
        case tovan::rxp_up_to_literal:
            return pass_up_to_literal(s, w);
        case tovan::rxp_identifier_start:
            return tovan::rxp_starts_identifier(s->subject, here);
        case tovan::rxp_identifier_end:
            return tovan::rxp_ends_identifier(s->subject, here);
        case tovan::rxp_subject_start:
            return here == s->subject;
        case tovan::rxp_subject_end:
            return here == s->end;
        case tovan::rxp_open:
            rxp_open_submatch(&s->found, w->state->argument, here);
            return true;
        case tovan::rxp_close:
            rxp_close_submatch(&s->found, w->state->argument, here);
            return true;
        case tovan::rxp_nothing:
            return true;
        default:
            return false;
    }
}

bool pass_or_end(search *s, way *w) {
    if (w->state->opcode == tovan::rxp_end) {
        succeed(s, w);
        return false;
    }
    if (w->state->opcode == tovan::rxp_rest) {
        take_rest(s, w);
        return false;
    }
    bool passes = pass_other(s, w);
    w->state = s->states + w->state->next;
    return passes;
}

// As many bytes as the run takes: what is behind it starts with another one.
void pass_run(search *s, way *w, const tovan::rxp_set &bytes) {
    const char *start = w->position;
    while (rxp_has(bytes, byte_at(w->position)))
        w->position++;
    s->patience -= w->position - start;
    w->inside = true;
    w->state = s->states + w->state->next;
}

bool attempt(search *s, const char *position) {
    const rxp_plan &plan = *s->plan;
    way w = {s->states + s->states[0].argument, position, false, false};
    for (;;) {
        auto number = static_cast<int>(w.state - s->states);
        bool goes_on = true;
        if (--s->patience <= 0) return give_up(s);
        switch (plan.quick[number]) {
            case rxp_quick::byte:
                goes_on = rxp_has(plan.bytes[number], byte_at(w.position));
                w.position++;
                w.state = s->states + w.state->next;
                break;
            case rxp_quick::run:
                pass_run(s, &w, plan.bytes[number]);
                break;
            case rxp_quick::fork:
                goes_on = enter_fork(s, &w, number);
                break;
            case rxp_quick::other:
                goes_on = pass_or_end(s, &w);
                break;
        }
        if (!goes_on && !take_up_next(s, &w)) return w.matched;
    }
}

// The first start behind `failed` that may do better; null when none may.
const char *start_behind(const search &s, const char *failed) {
    const rxp_plan &plan = *s.plan;
    if (plan.first_run == 0) return failed + 1;
    const char *end = failed;
    if (plan.first_byte != 0) {
        if (!rxp_has(plan.bytes[plan.first_byte], byte_at(end))) return end + 1;
        end++;
    }
    while (rxp_has(plan.bytes[plan.first_run], byte_at(end)))
        end++;
    if (plan.first_byte != 0) return end;
    return end == s.end ? nullptr : end + 1;
}

// The leftmost start of a match; null when there is none.
const char *find_match(search *s) {
    if (s->plan->is_anchored)
        return attempt(s, s->subject) ? s->subject : nullptr;
    const tovan::rxp_filters &filters = s->plan->filters;
    const char *from = rxp_find_start(filters, s->subject, s->end);
    while (from != nullptr) {
        if (attempt(s, from)) return from;
        if (from == s->end) break;
        from = start_behind(*s, from);
        if (from != nullptr) from = rxp_find_start(filters, from, s->end);
    }
    return nullptr;
}

// A program that is one text has matched when the text is found.
rxp_answer find_literal(const tovan::rxp_needle &needle, const char *subject,
                        const char *end) {
    const char *place = rxp_find_needle(needle, subject, end);
    if (place == nullptr) return rxp_answer::no_match;
    matches.pair[0].start = place;
    matches.pair[0].end = place + needle.length;
    return rxp_answer::match;
}

// A needle of one byte is looked for before the end of the subject is.
bool lacks_needle(const tovan::rxp_filters &filters, const char *subject) {
    return filters.needle.length == 1 && !filters.is_at_end &&
           strchr(subject, filters.needle.text[0]) == nullptr;
}

rxp_answer find(const rxp_plan *plan, const char *subject, const char *end) {
    search s;  // its frames are left unset
    s.plan = plan;
    s.states = tovan::rxp_states(plan->program);
    s.subject = subject;
    s.end = end;
    int64_t patience = plan->program[2] * (end - subject + 1) + 1;
    s.patience = patience;
    s.found.best = nullptr;
    s.found.highest = 0;
    for (int k = 1; k <= plan->shape.n_submatches; k++) {
        s.found.registers[2 * k] = nullptr;
        s.found.registers[2 * k + 1] = nullptr;
    }
    s.n_frames = 0;
    const char *start = find_match(&s);
    tovan::rxp_last_cost.steps = static_cast<uint64_t>(patience - s.patience);
    if (s.patience <= 0) return rxp_answer::gave_up;
    if (start == nullptr) return rxp_answer::no_match;
    matches.pair[0].start = start;
    // Chosen: nothing recorded, nothing spanned.
    if (s.found.best == nullptr) matches.pair[0].end = start;
    return rxp_answer::match;
}

}  // namespace

rxp_answer tovan::rxp_quick_search(const rxp_plan *plan, const char *subject) {
    const rxp_filters &filters = plan->filters;
    if (plan->is_anchored && !rxp_has(filters.first, byte_at(subject)))
        return rxp_answer::no_match;
    if (lacks_needle(filters, subject)) return rxp_answer::no_match;
    const char *end = subject + strlen(subject);
    if (plan->is_literal) return find_literal(filters.needle, subject, end);
    if (!rxp_may_match(filters, subject, end)) return rxp_answer::no_match;
    return find(plan, subject, end);
}

TOVAN_IDENT(rxpquick, "8.4", "26/11/21")
