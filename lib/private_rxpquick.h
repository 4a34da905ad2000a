// private_rxpquick.h (private): running a program by its plan.
// Builds on: private_rxpplan.h.
#ifndef TOVAN_PRIVATE_RXPQUICK_H
#define TOVAN_PRIVATE_RXPQUICK_H

#include "private_rxpplan.h"

namespace [[gnu::visibility("hidden")]] tovan {

enum class rxp_answer { no_match, match, undecided, gave_up };

// Looks for a match of a plain program without empty loops; what it finds goes
// to `matches`.
//   result    gave_up: ways meet again and again, and a search with a memory
//             has to start from the beginning
rxp_answer rxp_quick_search(const rxp_plan *plan, const char *subject);

}  // namespace tovan

#endif
