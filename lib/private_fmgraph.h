// private_fmgraph.h (private): file-name patterns whose braces can be open in
// many ways.
// Builds on: private_fmatch.h.
#ifndef TOVAN_PRIVATE_FMGRAPH_H
#define TOVAN_PRIVATE_FMGRAPH_H

#include "private_fmatch.h"

namespace [[gnu::visibility("hidden")]] tovan {

// As match_braces(), but without a report, whatever errors there are. It is
// slower than that, and has a bound for all patterns: each place of pattern
// and subject is looked at once for each of the nodes, of which there are at
// most braces x subject x 5.
bool match_in_graph(text_pointer whole, text_pointer p, text_pointer f,
                    text_pointer again_p, text_pointer again_f);

}  // namespace tovan

#endif
