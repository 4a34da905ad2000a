// patterns.h: for inputs that hold many file-name patterns.
#ifndef TOVAN_FUZZ_PATTERNS_H
#define TOVAN_FUZZ_PATTERNS_H

#include "../lib/private_fmatch.h"

namespace fuzz {

// Each match may report errors ten thousand times; here a few will do.
inline void report_less() {
    tovan::most_brace_reports = 20;
}

}  // namespace fuzz

#endif
