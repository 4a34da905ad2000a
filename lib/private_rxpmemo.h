// private_rxpmemo.h (private): what visits of branch states leave behind.
// Builds on: private_rxprun.h, private_rxpshape.h.
#ifndef TOVAN_PRIVATE_RXPMEMO_H
#define TOVAN_PRIVATE_RXPMEMO_H

#include "private_rxprun.h"
#include "private_rxpshape.h"

#include <stddef.h>
#include <stdint.h>

namespace [[gnu::visibility("hidden")]] tovan {

// The stretch that a scanning state has passed last, as offsets.
struct rxp_stretch {
    size_t from;
    size_t to;
};

struct rxp_memory {
    uint32_t *slots;                 // by branch and position
    uint32_t *rows[rxp_max_states];  // where the slots of a branch start
    size_t slots_room;
    uint32_t *records;
    size_t n_records;  // words
    size_t records_room;
    size_t records_limit;
    uint32_t last_record;
    rxp_stretch stretches[rxp_max_states];
};

// Switches the memory on. Visits that are under way are not remembered.
// Without effect where it would not be exact (back-references) or would not
// fit (subjects of 4 GiB, no room on the heap).
void rxp_remember(rxp_machine *machine);

// Where visits of a branch at a position are remembered; 0: none was made.
inline uint32_t *rxp_slot(const rxp_machine *machine, int branch,
                          const char *position) {
    return machine->memory->rows[branch] + (position - machine->subject);
}

// Repeats what an equal visit of the branch has done.
//   result    whether there was one
bool rxp_recall(rxp_machine *machine, int branch, const char *position);

// Notes a complete visit; machine->written is what it wrote.
void rxp_note(rxp_machine *machine, int branch, const char *position);

// Ends the use of the memory.
//   result    the bytes that it had taken
size_t rxp_forget(rxp_memory *memory);

}  // namespace tovan

#endif
