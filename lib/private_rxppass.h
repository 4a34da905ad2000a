// private_rxppass.h (private): states that pass characters.
// Builds on: private_rxpmemo.h, private_rxprun.h.
//
// A part of rxprun.cc, which alone includes it: all of it goes into one loop.
#ifndef TOVAN_PRIVATE_RXPPASS_H
#define TOVAN_PRIVATE_RXPPASS_H

#include "private_rxpmemo.h"
#include "private_rxprun.h"

#include <stddef.h>
#include <stdint.h>

namespace [[gnu::visibility("hidden")]] tovan {
namespace {

// The way that is being tried.
struct rxp_way {
    unsigned char state;
    bool stood;    // passed something of no width since the last branch
    bool inside;   // met a branch in this attempt
    bool matched;  // found an end in this attempt
    const char *position;
};

unsigned char byte_at(const char *position) {
    return static_cast<unsigned char>(*position);
}

// The end of the run of characters that pass, from `start` on. With a memory
// a stretch that this state has passed before is not passed again.
template <typename Passes>
const char *scan(rxp_machine *m, int state, const char *start, Passes passes) {
    constexpr rxp_stretch nothing = {SIZE_MAX, 0};
    auto from = static_cast<size_t>(start - m->subject);
    const rxp_stretch &known =
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

bool pass_identifier(rxp_machine *m, rxp_way *w) {
    if (!rxp_starts_identifier(m->subject, w->position)) return false;
    const char *start = w->position++;
    while (re_is(*w->position, re_identifier))
        w->position++;
    m->steps += static_cast<uint64_t>(w->position - start);
    return true;
}

bool pass_white_run(rxp_machine *m, rxp_way *w) {
    auto is_white = [](char c) { return re_is(c, re_space); };
    w->position = scan(m, w->state, w->position, is_white);
    return true;
}

bool pass_up_to_literal(rxp_machine *m, rxp_way *w, unsigned char literal) {
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

bool pass_same_text(rxp_machine *m, rxp_way *w, int number) {
    text_span text = submatch_text(m, number);
    for (; text.start != text.end; text.start++, w->position++) {
        m->steps++;
        if (*text.start != *w->position) return false;
    }
    return true;
}

// Deliberate: does not move where the first character of the sub-match stands
// already, and then its loop fails (test up_to_same_text_stays_where_it_is).
bool pass_up_to_same_text(rxp_machine *m, rxp_way *w, int number) {
    text_span text = submatch_text(m, number);
    if (text.start == text.end) return false;
    char first = *text.start;
    auto is_other = [first](char c) { return c != '\0' && c != first; };
    w->position = scan(m, w->state, w->position, is_other);
    return *w->position != '\0';
}

bool pass_if(rxp_way *w, bool passes) {
    w->position += passes;
    return passes;
}

bool stand_if(rxp_way *w, bool stands) {
    w->stood |= stands;
    return stands;
}

// Deliberate: registers keep what a way has written that fails, and even an
// attempt from an earlier start (test registers_are_not_restored).
bool open_submatch(rxp_machine *m, rxp_way *w, int number) {
    rxp_open_submatch(&m->found, number, w->position);
    m->written |=
        rxp_register_bit(2 * number) | rxp_register_bit(2 * number + 1);
    return stand_if(w, true);
}

bool close_submatch(rxp_machine *m, rxp_way *w, int number) {
    rxp_close_submatch(&m->found, number, w->position);
    m->written |= rxp_register_bit(2 * number + 1);
    return stand_if(w, true);
}

// Deliberate: only a letter that the pattern writes small matches both cases
// (test folding_needs_a_small_letter_in_the_pattern).
bool is_folded(unsigned char character, unsigned char literal) {
    bool is_upper = (re_type[character] & re_upper) != 0;
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
bool pass(rxp_machine *m, rxp_way *w, const rxp_state &state) {
    const char *here = w->position;
    unsigned char c = byte_at(here);
    // clang-format off
    switch (state.opcode) {
    case rxp_literal: return pass_if(w, c == state.argument);
    case rxp_folded: return pass_if(w, is_folded(c, state.argument));
    case rxp_any: return pass_if(w, c != 0);
    case rxp_unclassed: return pass_if(w, re_type[c] == 0);
    case rxp_digit: return pass_if(w, re_is(*here, re_digit));
    case rxp_not_white:
        return pass_if(w, c != 0 && !re_is(*here, re_space));
    case rxp_in_ranges:
        return pass_if(w, c != 0 && is_in_ranges(m, state, c));
    case rxp_not_in_ranges:
        return pass_if(w, c != 0 && !is_in_ranges(m, state, c));
    case rxp_white_run:
        return re_is(*here, re_space) && pass_white_run(m, w);
    case rxp_white_run_or_none: return pass_white_run(m, w);
    case rxp_identifier: return pass_identifier(m, w);
    case rxp_up_to_literal:
        return pass_up_to_literal(m, w, state.argument);
    case rxp_same_text: return pass_same_text(m, w, state.argument);
    case rxp_up_to_same_text:
        return pass_up_to_same_text(m, w, state.argument);

    case rxp_identifier_start:
        return stand_if(w, rxp_starts_identifier(m->subject, here));
    case rxp_identifier_end:
        return stand_if(w, rxp_ends_identifier(m->subject, here));
    case rxp_subject_start: return stand_if(w, here == m->subject);
    case rxp_subject_end: return stand_if(w, c == 0);
    case rxp_nothing: return stand_if(w, true);
    case rxp_open:
        return open_submatch(m, w, state.argument);
    case rxp_close:
        return close_submatch(m, w, state.argument);
    default: return false;
    }
    // clang-format on
}

}  // namespace
}  // namespace tovan

#endif
