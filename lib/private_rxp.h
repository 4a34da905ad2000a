// private_rxp.h (private): the compiled form of a regular expression.
// Builds on: rxpcomp.h.
//
// A program is a row of states of four bytes, two summary bytes and the
// ranges of its bracket classes:
//
//     state 0      header: first state to run, number of the end state,
//                  254 or 255 (inverted or not) as alternative
//     states 1...  up to and including the end state
//     minnop       lowest and
//     maxnop       highest number of a branch state
//     ranges       pairs (low, high), numbered from 1
//     0
//
// The pattern `a[b-dx]*` on one line, state by state:
//
//     10 1 4 255   1 97 3 255   16 2 3 1   10 255 4 2   11 255 255 255
//     3 3   98 100 120 120   0
//
// The loop's branch (state 3) comes before its class (state 2): the literal
// (state 1) was linked to it.
#ifndef TOVAN_PRIVATE_RXP_H
#define TOVAN_PRIVATE_RXP_H

#include "rxpcomp.h"

namespace [[gnu::visibility("hidden")]] tovan {

// Every opcode in the order of its number, with the name that a dump gives it.
// clang-format off
#define TOVAN_RXP_OPCODES(row)                                               \
    row(none, "---")            row(literal, "Mch")                          \
    row(any, "Man")             row(unclassed, "Mfr")                        \
    row(digit, "Mdi")           row(white_run, "Msp")                        \
    row(identifier_end, "Mie")  row(identifier_start, "Mis")                 \
    row(same_text, "Mre")       row(identifier, "Mid")                       \
    row(branch, "Nop")          row(end, "END")                              \
    row(subject_start, "Mst")   row(subject_end, "Mls")                      \
    row(open, "Msr")            row(close, "Mer")                            \
    row(in_ranges, "Mrn")       row(not_in_ranges, "Mnr")                    \
    row(nothing, "Mnu")         row(folded, "Dch")                           \
    row(white_run_or_none, "Mss")                                            \
    row(rest, "Fen")            row(up_to_literal, "Fch")                    \
    row(up_to_same_text, "Fre") row(not_white, "Mti")
// clang-format on

enum rxp_opcode : unsigned char {
#define TOVAN_RXP_ENUMERATOR(name, text) rxp_##name,
    TOVAN_RXP_OPCODES(TOVAN_RXP_ENUMERATOR)
#undef TOVAN_RXP_ENUMERATOR
        rxp_opcodes
};
static_assert(rxp_branch == 10 && rxp_end == 11 && rxp_not_white == 24);

constexpr unsigned char rxp_unused = 255;    // argument or alternative
constexpr unsigned char rxp_inverted = 254;  // alternative of the header
constexpr int rxp_max_states = 256;          // a state number is one byte
constexpr int rxp_max_pairs = 256;
constexpr int rxp_max_submatch = 9;

struct rxp_state {
    unsigned char opcode;
    unsigned char argument;
    unsigned char next;
    unsigned char alternative;
};
static_assert(sizeof(rxp_state) == 4 && alignof(rxp_state) == 1);

inline const rxp_state *rxp_states(const unsigned char *program) {
    return reinterpret_cast<const rxp_state *>(program);
}

inline bool rxp_is_program(const unsigned char *program) {
    const rxp_state &header = *rxp_states(program);
    return header.opcode == rxp_branch && header.alternative >= rxp_inverted;
}

inline int rxp_end_state(const unsigned char *program) {
    return rxp_states(program)->next;
}

inline int rxp_first_state(const unsigned char *program) {
    return rxp_states(program)->argument;
}

// minnop, maxnop and then the ranges.
inline const unsigned char *rxp_summary(const unsigned char *program) {
    return program + 4 * (rxp_end_state(program) + 1);
}

// The first pair of a bracket class; the state's argument is their number.
inline const unsigned char *rxp_class_pairs(const unsigned char *program,
                                            const rxp_state &state) {
    return rxp_summary(program) + 2 + 2 * (state.alternative - 1);
}

// A branch that goes one way only.
inline bool rxp_is_jump(const rxp_state &state) {
    return state.opcode == rxp_branch && state.next == state.alternative;
}

// Bits of re_type.
constexpr int re_lower = 0x01;
constexpr int re_digit = 0x02;
constexpr int re_null = 0x04;
constexpr int re_punctuation = 0x08;
constexpr int re_space = 0x10;
constexpr int re_upper = 0x20;
constexpr int re_underbar = 0x40;
constexpr int re_special = 0x80;

constexpr int re_letter = re_lower | re_upper;
constexpr int re_identifier_start = re_letter | re_underbar;
constexpr int re_identifier = re_identifier_start | re_digit;

inline bool re_is(char character, int classes) {
    return (re_type[static_cast<unsigned char>(character)] & classes) != 0;
}

// The passes over a generated program (rxpopt.cc): shorter links, and faster
// forms of "." in a loop. State 0 takes part through its next, the first
// state to run.
void rxp_optimise(rxp_state *states, int count);

}  // namespace tovan

#endif
