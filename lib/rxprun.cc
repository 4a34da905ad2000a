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
#include "private_rxppass.h"
#include "private_rxprun.h"
#include "private_rxpshape.h"

#include <stdlib.h>
#include <string.h>

using namespace tovan;

namespace {

// Kinds of frames.
enum : unsigned {
    waiting,     // the alternative is to be tried
    completing,  // both ways are done when this one comes up
    restoring,   // the branch was open before: at this offset
};

// The shape of a program that has no plan, during one evaluation.
constinit tovan::rxp_shape own_shape = {};

// ---- results ------------------------------------------------------------

// Ends the way with success. At the end of the subject nothing else is tried.
void succeed(rxp_machine *m, rxp_way *w, const char *end) {
    rxp_record(&m->found, end);
    w->matched = true;
    if (*end == '\0') m->n_frames = 0;
}

// Deliberate: "." looping to the end does not record what it has reached, a
// branch around it does (test rest_without_a_branch_records_nothing).
void take_rest(rxp_machine *m, rxp_way *w) {
    w->matched = true;
    if (w->inside) rxp_record(&m->found, w->position + strlen(w->position));
    m->n_frames = 0;
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
bool enter_branch(rxp_machine *m, rxp_way *w, const rxp_state &state) {
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
bool take_up_next(rxp_machine *m, rxp_way *w) {
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
    rxp_way w = {m->states[0].argument, false, false, false, position};
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
