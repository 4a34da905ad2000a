// rxprun.cc: running a compiled regular expression.
//
// The rules read as a recursive procedure: states follow one another, a
// branch tries its next, then its alternative, and passes on the farther end;
// an end at the end of the subject stops it from trying the alternative. Two
// things follow, and make the procedure a loop over a stack of ways not yet
// tried:
//
// - An end that was found is never given up. The farther one is what has been
//   recorded, so that a way that ends may just as well count as failed once
//   its end is recorded. Only whether there was any end is kept.
// - When an end of the subject is reached, no branch around it tries anything
//   more: the attempt is over.
//
//     <a|ab>*c on "abx"     frames (branch@position, waiting alternatives)
//     enter loop at 0       L@0            next is c: fails
//     alternative of L      L@0 F@0        a, then the loop at 1
//                           L@0 F@0 L@1    c fails, and so on
//
// A branch that is entered at a position stays open until both ways are done.
// Meeting it open at the same position means that a loop went around without
// consuming: that way fails, or, if something of no width was passed since the
// last branch, ends there. `guard` holds the position for each branch; frames
// bring the one before back.
//
// Frames tell when a visit is complete, which is what the memory
// (rxpmemo.cc) is fed with. Subjects of 64 GiB and more are not handled.
#include "rxpcomp.h"

#include "chkalloc.h"
#include "ident.h"
#include "private_rxp.h"
#include "private_rxpmemo.h"
#include "private_rxprun.h"
#include "private_rxpshape.h"

#include <stdlib.h>
#include <string.h>

using tovan::re_is;
using tovan::rxp_frame;
using tovan::rxp_machine;
using tovan::rxp_state;

namespace {

// Kinds of frames.
enum : unsigned {
    waiting,     // the alternative is to be tried
    completing,  // both ways are done when this one comes up
    restoring,   // the branch was open before: at this offset
};

// The shape of a program that has no plan, during one evaluation.
constinit tovan::rxp_shape own_shape = {};

// The way that is being tried.
struct way {
    unsigned char state;
    bool stood;    // passed something of no width since the last branch
    bool inside;   // met a branch in this attempt
    bool matched;  // found an end in this attempt
    const char *position;
};

unsigned char byte_at(const char *position) {
    return static_cast<unsigned char>(*position);
}

// ---- results ------------------------------------------------------------

// Ends the way with success. At the end of the subject nothing else is tried.
void succeed(rxp_machine *m, way *w, const char *end) {
    rxp_record(&m->found, end);
    w->matched = true;
    if (*end == '\0') m->n_frames = 0;
}

// Deliberate: "." looping to the end does not record what it has reached, a
// branch around it does (test rest_without_a_branch_records_nothing).
void take_rest(rxp_machine *m, way *w) {
    w->matched = true;
    if (w->inside) rxp_record(&m->found, w->position + strlen(w->position));
    m->n_frames = 0;
}

// ---- states that pass characters ----------------------------------------

// The end of the run of characters that pass, from `start` on. With a memory
// a stretch that this state has passed before is not passed again.
template <typename Passes>
const char *scan(rxp_machine *m, int state, const char *start, Passes passes) {
    constexpr tovan::rxp_stretch nothing = {SIZE_MAX, 0};
    auto from = static_cast<size_t>(start - m->subject);
    const tovan::rxp_stretch &known =
        m->memory != nullptr ? m->memory->stretches[state] : nothing;
    if (known.from <= from && from <= known.to) return m->subject + known.to;
    size_t to = from;
    while (to != known.from && passes(m->subject[to]))
        to++;
    m->steps += to - from;
    if (to == known.from) to = known.to;
    if (m->memory != nullptr) m->memory->stretches[state] = {from, to};
    return m->subject + to;
}

bool pass_identifier(rxp_machine *m, way *w) {
    if (!tovan::rxp_starts_identifier(m->subject, w->position)) return false;
    const char *start = w->position++;
    while (re_is(*w->position, tovan::re_identifier))
        w->position++;
    m->steps += static_cast<uint64_t>(w->position - start);
    return true;
}

bool pass_white_run(rxp_machine *m, way *w) {
    auto is_white = [](char c) { return re_is(c, tovan::re_space); };
    w->position = scan(m, w->state, w->position, is_white);
    return true;
}

bool pass_up_to_literal(rxp_machine *m, way *w, unsigned char literal) {
    if (*w->position == '\0') return false;
    auto is_other = [literal](char c) {
        return c != '\0' && static_cast<unsigned char>(c) != literal;
    };
    w->position = scan(m, w->state, w->position + 1, is_other);
    return *w->position != '\0';
}

// The text of a sub-match: from start up to end.
struct text_span {
    const char *start;
    const char *end;
};

// Chosen: a sub-match that is unset or still open counts as the empty text.
// So does one that ends before it starts: registers are not restored, and an
// alternative that waited may close again what was opened further on.
text_span submatch_text(const rxp_machine *m, int number) {
    const char *start = m->found.registers[2 * number];
    const char *end = m->found.registers[2 * number + 1];
    if (start == nullptr || end == nullptr || end < start)
        return {m->subject, m->subject};
    return {start, end};
}

bool pass_same_text(rxp_machine *m, way *w, int number) {
    text_span text = submatch_text(m, number);
    for (; text.start != text.end; text.start++, w->position++) {
        m->steps++;
        if (*text.start != *w->position) return false;
    }
    return true;
}

// Deliberate: does not move where the first character of the sub-match stands
// already, and then its loop fails (test up_to_same_text_stays_where_it_is).
bool pass_up_to_same_text(rxp_machine *m, way *w, int number) {
    text_span text = submatch_text(m, number);
    if (text.start == text.end) return false;
    char first = *text.start;
    auto is_other = [first](char c) { return c != '\0' && c != first; };
    w->position = scan(m, w->state, w->position, is_other);
    return *w->position != '\0';
}

bool pass_if(way *w, bool passes) {
    w->position += passes;
    return passes;
}

bool stand_if(way *w, bool stands) {
    w->stood |= stands;
    return stands;
}

// Deliberate: registers keep what a way has written that fails, and even an
// attempt from an earlier start (test registers_are_not_restored).
bool open_submatch(rxp_machine *m, way *w, int number) {
    rxp_open_submatch(&m->found, number, w->position);
    m->written |= tovan::rxp_register_bit(2 * number) |
                  tovan::rxp_register_bit(2 * number + 1);
    return stand_if(w, true);
}

bool close_submatch(rxp_machine *m, way *w, int number) {
    rxp_close_submatch(&m->found, number, w->position);
    m->written |= tovan::rxp_register_bit(2 * number + 1);
    return stand_if(w, true);
}

// Deliberate: only a letter that the pattern writes small matches both cases
// (test folding_needs_a_small_letter_in_the_pattern).
bool is_folded(unsigned char character, unsigned char literal) {
    bool is_upper = (re_type[character] & tovan::re_upper) != 0;
    return character == literal || (is_upper && character + 32 == literal);
}

bool is_in_ranges(const rxp_machine *m, const rxp_state &state,
                  unsigned char character) {
    auto *program = reinterpret_cast<const unsigned char *>(m->states);
    const unsigned char *pair = rxp_class_pairs(program, state);
    for (int i = 0; i < state.argument; i++, pair += 2) {
        if (pair[0] <= character && character <= pair[1]) return true;
    }
    return false;
}

// Any state but END, "." to the end and branches.
bool pass(rxp_machine *m, way *w, const rxp_state &state) {
    const char *here = w->position;
    unsigned char c = byte_at(here);
    // clang-format off
    switch (state.opcode) {
    case tovan::rxp_literal: return pass_if(w, c == state.argument);
    case tovan::rxp_folded: return pass_if(w, is_folded(c, state.argument));
    case tovan::rxp_any: return pass_if(w, c != 0);
    case tovan::rxp_unclassed: return pass_if(w, re_type[c] == 0);
    case tovan::rxp_digit: return pass_if(w, re_is(*here, tovan::re_digit));
    case tovan::rxp_not_white:
        return pass_if(w, c != 0 && !re_is(*here, tovan::re_space));
    case tovan::rxp_in_ranges:
        return pass_if(w, c != 0 && is_in_ranges(m, state, c));
    case tovan::rxp_not_in_ranges:
        return pass_if(w, c != 0 && !is_in_ranges(m, state, c));
    case tovan::rxp_white_run:
        return re_is(*here, tovan::re_space) && pass_white_run(m, w);
    case tovan::rxp_white_run_or_none: return pass_white_run(m, w);
    case tovan::rxp_identifier: return pass_identifier(m, w);
    case tovan::rxp_up_to_literal:
        return pass_up_to_literal(m, w, state.argument);
    case tovan::rxp_same_text: return pass_same_text(m, w, state.argument);
    case tovan::rxp_up_to_same_text:
        return pass_up_to_same_text(m, w, state.argument);

    case tovan::rxp_identifier_start:
        return stand_if(w, tovan::rxp_starts_identifier(m->subject, here));
    case tovan::rxp_identifier_end:
        return stand_if(w, tovan::rxp_ends_identifier(m->subject, here));
    case tovan::rxp_subject_start: return stand_if(w, here == m->subject);
    case tovan::rxp_subject_end: return stand_if(w, c == 0);
    case tovan::rxp_nothing: return stand_if(w, true);
    case tovan::rxp_open:
        return open_submatch(m, w, state.argument);
    case tovan::rxp_close:
        return close_submatch(m, w, state.argument);
    default: return false;
    }
    // clang-format on
}

// ---- branches and frames ------------------------------------------------

// Many frames: from here on it pays to know which branches need no guard.
void make_room(rxp_machine *m) {
    rxp_know_shape(m);
    size_t room = m->room + m->room / 8;
    bool is_first = m->frames == m->first_frames;
    void *block =
        chkrealloc(is_first ? nullptr : m->frames, room * sizeof(rxp_frame));
    m->frames = static_cast<rxp_frame *>(block);
    if (is_first) memcpy(block, m->first_frames, sizeof m->first_frames);
    m->room = room;
}

void push(rxp_machine *m, unsigned kind, int branch, const char *position) {
    if (m->n_frames == m->room) make_room(m);
    rxp_frame &frame = m->frames[m->n_frames++];
    frame.offset = static_cast<uint64_t>(position - m->subject) & 0xfffffffff;
    frame.written = m->written & 0x3ffff;
    frame.state = static_cast<unsigned char>(branch);
    frame.kind = kind & 3;
}

// Whether the branch could be met again before anything is consumed.
bool is_guarded(const rxp_machine *m, int branch) {
    return m->shape == nullptr ||
           rxp_has(m->shape->empty_loops, static_cast<unsigned>(branch));
}

void open_guard(rxp_machine *m, int branch, const char *position) {
    if (m->guard[branch] != nullptr)
        push(m, restoring, branch, m->guard[branch]);
    m->guard[branch] = position;
}

// Most subjects never get here: a memory is worth its price only where ways
// meet again and again.
void lose_patience(rxp_machine *m) {
    uint64_t length = strlen(m->subject);
    auto n_states = static_cast<uint64_t>(m->states[0].next);
    uint64_t allowed = n_states * (length + 1);
    if (m->steps < allowed) {
        m->patience = allowed;
        return;
    }
    m->patience = UINT64_MAX;
    rxp_remember(m);
}

// The way goes on with the next of the branch, its alternative waits.
bool enter_branch(rxp_machine *m, way *w, const rxp_state &state) {
    int branch = w->state;
    bool guarded = is_guarded(m, branch);
    if (guarded && m->guard[branch] == w->position) {
        if (w->stood) succeed(m, w, w->position);
        return false;
    }
    if (m->steps >= m->patience) lose_patience(m);
    if (m->memory != nullptr && *rxp_slot(m, branch, w->position) != 0 &&
        rxp_recall(m, branch, w->position))
        return false;
    if (guarded) open_guard(m, branch, w->position);
    push(m, waiting, branch, w->position);
    m->written = 0;
    w->inside = true;
    w->stood = false;
    w->state = state.next;
    return true;
}

// Both ways of the branch on top are done.
void complete(rxp_machine *m) {
    const rxp_frame frame = m->frames[--m->n_frames];
    int branch = frame.state;
    if (is_guarded(m, branch)) m->guard[branch] = nullptr;
    if (m->n_frames < m->remembered_from) {
        m->remembered_from = m->n_frames;
    } else if (m->memory != nullptr) {
        rxp_note(m, branch, m->subject + frame.offset);
    }
    m->written |= frame.written;
}

// Takes up the next alternative that waits; false when there is none.
bool take_up_next(rxp_machine *m, way *w) {
    while (m->n_frames > 0) {
        rxp_frame &frame = m->frames[m->n_frames - 1];
        const rxp_state &branch = m->states[frame.state];
        if (frame.kind == restoring) {
            m->guard[frame.state] = m->subject + frame.offset;
            m->n_frames--;
        } else if (frame.kind == waiting && !rxp_is_jump(branch)) {
            frame.kind = completing;
            w->state = branch.alternative;
            w->position = m->subject + frame.offset;
            w->stood = false;
            return true;
        } else {
            complete(m);
        }
    }
    return false;
}

}  // namespace

constinit tovan::rxp_cost tovan::rxp_last_cost = {};

void tovan::rxp_know_shape(rxp_machine *m) {
    if (m->shape != nullptr) return;
    rxp_find_shape(&own_shape,
                   reinterpret_cast<const unsigned char *>(m->states));
    m->shape = &own_shape;
}

void tovan::rxp_start(rxp_machine *m, const char *subject,
                      const unsigned char *program, const rxp_shape *shape) {
    constexpr uint64_t first_patience = 1024;  // not worth a strlen before

    m->states = rxp_states(program);
    m->subject = subject;
    m->found = {};
    const unsigned char *summary = rxp_summary(program);
    size_t guards = summary[1] - summary[0] + size_t{1};
    memset(m->guard + summary[0], 0, guards * sizeof m->guard[0]);
    m->frames = m->first_frames;
    m->n_frames = 0;
    m->room = sizeof m->first_frames / sizeof m->first_frames[0];
    m->steps = 0;
    m->patience = first_patience;
    m->shape = shape;
    m->memory = nullptr;
    m->remembered_from = 0;
    m->written = 0;
}

bool tovan::rxp_attempt(rxp_machine *m, const char *position) {
    if (m->steps >= m->patience) lose_patience(m);
    way w = {m->states[0].argument, false, false, false, position};
    for (;;) {
        const rxp_state &state = m->states[w.state];
        bool goes_on = false;
        m->steps++;
        if (state.opcode == rxp_branch) {
            goes_on = enter_branch(m, &w, state);
        } else if (state.opcode == rxp_end) {
            succeed(m, &w, w.position);
        } else if (state.opcode == rxp_rest) {
            take_rest(m, &w);
        } else {
            goes_on = pass(m, &w, state);
            w.state = state.next;
        }
        if (!goes_on && !take_up_next(m, &w)) return w.matched;
    }
}

void tovan::rxp_stop(rxp_machine *m) {
    rxp_last_cost.steps += m->steps;
    if (m->frames != m->first_frames) {
        rxp_last_cost.heap += m->room * sizeof(rxp_frame);
        free(m->frames);
    }
    if (m->memory != nullptr) rxp_last_cost.heap += rxp_forget(m->memory);
}

TOVAN_IDENT(rxprun, "8.4", "26/11/21")
