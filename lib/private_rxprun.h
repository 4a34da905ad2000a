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

// One evaluation. What the program records goes to `matches`.
struct rxp_machine {
    const rxp_state *states;
    const char *subject;
    const char *best;  // the farthest end recorded so far; null: none
    int highest;       // of the sub-matches that were started; 0: none
    const char *registers[rxp_registers];
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

// Whether the program matches from this position on.
bool rxp_attempt(rxp_machine *machine, const char *position);

void rxp_stop(rxp_machine *machine);

}  // namespace tovan

#endif
