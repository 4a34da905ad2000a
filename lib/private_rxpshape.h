// private_rxpshape.h (private): what can be said about a program before it
// runs.
// Builds on: private_rxp.h.
#ifndef TOVAN_PRIVATE_RXPSHAPE_H
#define TOVAN_PRIVATE_RXPSHAPE_H

#include "private_rxp.h"

#include <stdint.h>
#include <bit>

namespace [[gnu::visibility("hidden")]] tovan {

// A set of state numbers or of bytes.
struct rxp_set {
    uint64_t words[4];
};

inline bool rxp_has(const rxp_set &set, unsigned member) {
    return (set.words[member >> 6] >> (member & 63) & 1) != 0;
}

inline void rxp_add(rxp_set *set, unsigned member) {
    set->words[member >> 6] |= uint64_t{1} << (member & 63);
}

inline bool rxp_is_empty(const rxp_set &set) {
    return (set.words[0] | set.words[1] | set.words[2] | set.words[3]) == 0;
}

// Calls visit(member) for every member.
template <typename Visit>
void rxp_for_each(const rxp_set &set, Visit visit) {
    for (unsigned word = 0; word < 4; word++) {
        for (uint64_t bits = set.words[word]; bits != 0; bits &= bits - 1)
            visit(64 * word + static_cast<unsigned>(std::countr_zero(bits)));
    }
}

// Whether the state can be passed without consuming a character.
bool rxp_may_stand(const rxp_state &state);

// The branch states of a program and how they can meet again.
struct rxp_shape {
    int n_branches;
    bool has_references;  // back-references: what a visit does depends on
                          // registers, and nothing can be remembered
    int n_submatches;
    bool has_empty_loops;     // some branch can meet itself without consuming
    bool has_standing_loops;  // and may end the match by that
    unsigned char ordinal[rxp_max_states];  // of a branch, from 0
    rxp_set empty_loops;  // branches that can meet themselves without consuming
    rxp_set meets[rxp_max_states];  // by ordinal: the empty loops to be met
};

void rxp_find_shape(rxp_shape *shape, const unsigned char *program);

}  // namespace tovan

#endif
