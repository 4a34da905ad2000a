// private_rxprun.h (private): running a compiled regular expression.
// Builds on: private_rxp.h, private_rxpshape.h.
//
// Order: rxp_start, rxp_attempt from one position after the other, rxp_stop.
#ifndef TOVAN_PRIVATE_RXPRUN_H
#define TOVAN_PRIVATE_RXPRUN_H

#include "private_rxp.h"
#include "private_rxpshape.h"

#include <stddef.h>
#include <stdint.h>

namespace [[gnu::visibility("hidden")]] tovan {

struct rxp_memory;

// What is left to do when the current way through the program ends.
struct rxp_frame {
    uint64_t offset : 36;   // of a position of the subject
    uint64_t written : 18;  // registers written outside of the visit
    uint64_t state : 8;     // number of a branch state
    uint64_t kind : 2;
};
static_assert(sizeof(rxp_frame) == 8);

// Register 2k is the start of sub-match k, register 2k + 1 its end.
constexpr int rxp_registers = 2 * (rxp_max_submatch + 1);

// A set of registers: bit r - 2 stands for register r.
constexpr unsigned rxp_register_bit(int number) {
    return 1u << (number - 2);
}

// What an evaluation has found so far.
struct rxp_findings {
    const char *best;  // the farthest end recorded; null: none
    int highest;       // of the sub-matches that were started; 0: none
    const char *registers[rxp_registers];
};

inline void rxp_open_submatch(rxp_findings *found, int number,
                              const char *position) {
    found->registers[2 * number] = position;
    found->registers[2 * number + 1] = nullptr;
    if (number > found->highest) found->highest = number;
}

inline void rxp_close_submatch(rxp_findings *found, int number,
                               const char *position) {
    found->registers[2 * number + 1] = position;
}

// Publishes a farther end with the sub-matches as they are now.
inline void rxp_record(rxp_findings *found, const char *end) {
    if (found->best != nullptr && end <= found->best) return;
    found->best = end;
    matches.pair[0].end = end;
    for (int k = 1; k <= found->highest; k++) {
        matches.pair[k].start = found->registers[2 * k];
        matches.pair[k].end = found->registers[2 * k + 1];
    }
    matches.count = found->highest;
}

// The two tests of no width that look at both sides of a position.
inline bool rxp_starts_identifier(const char *subject, const char *position) {
    return re_is(*position, re_identifier_start) &&
           (position == subject || !re_is(position[-1], re_identifier));
}

inline bool rxp_ends_identifier(const char *subject, const char *position) {
    return position != subject && !re_is(*position, re_identifier) &&
           re_is(position[-1], re_identifier);
}

// One evaluation. What the program records goes to `matches`.
struct rxp_machine {
    const rxp_state *states;
    const char *subject;
    rxp_findings found;
    const char *guard[rxp_max_states];  // where branches have been entered

    rxp_frame *frames;  // first_frames, or a block of the heap
    size_t n_frames;
    size_t room;
    rxp_frame first_frames[64];

    uint64_t steps;          // characters passed by scanning states included
    uint64_t patience;       // steps before the next thought of a memory
    const rxp_shape *shape;  // null: not known
    rxp_memory *memory;      // null: not switched on
    size_t remembered_from;  // frames below were pushed without memory
    unsigned written;        // registers, in the current visit
};

// What the last evaluation has taken, for the tests of its bounds.
struct rxp_cost {
    uint64_t steps;
    uint64_t heap;  // bytes
};
extern rxp_cost rxp_last_cost;

void rxp_start(rxp_machine *machine, const char *subject,
               const unsigned char *program, const rxp_shape *shape);

// Finds out the shape of the program where it is not known yet.
void rxp_know_shape(rxp_machine *machine);

// Whether the program matches from this position on.
bool rxp_attempt(rxp_machine *machine, const char *position);

void rxp_stop(rxp_machine *machine);

}  // namespace tovan

#endif
