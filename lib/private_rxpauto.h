// private_rxpauto.h (private): running a program as an automaton.
// Builds on: private_rxpplan.h, private_rxpquick.h.
#ifndef TOVAN_PRIVATE_RXPAUTO_H
#define TOVAN_PRIVATE_RXPAUTO_H

#include "private_rxpplan.h"
#include "private_rxpquick.h"

namespace [[gnu::visibility("hidden")]] tovan {

// Whether a plain program can be run as an automaton.
bool rxp_is_regular(const rxp_plan *plan);

// Looks for a match of such a program in [subject, end).
//   result    undecided: there is one, but its sub-matches are not known;
//             gave_up: the automaton would have too many states
rxp_answer rxp_automaton_search(const rxp_plan *plan, const char *subject,
                                const char *end);

}  // namespace tovan

#endif
