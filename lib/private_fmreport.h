// private_fmreport.h (private): what a file-name match writes to standard
// error.
// Builds on: private_fmatch.h.
#ifndef TOVAN_PRIVATE_FMREPORT_H
#define TOVAN_PRIVATE_FMREPORT_H

#include "private_fmatch.h"

namespace [[gnu::visibility("hidden")]] tovan {

inline const char *as_string(text_pointer text) {
    return reinterpret_cast<const char *>(text);
}

// A step for the trace.
//   sign      "" at its start, "-" at each element of the pattern
//   mark      why it was made
//   depth     of the open braces
//   close     behind the innermost one; null: none is open
void show_step(const char *sign, int mark, int level, int depth,
               text_pointer pattern, text_pointer subject, text_pointer close);

// Braces nest too deep.
void report_depth(text_pointer whole);

// The "}" at `pattern` is not the end that was found for the innermost brace.
//   outer     the end of the brace around it; null: there is none
void report_close(text_pointer whole, text_pointer pattern, text_pointer close,
                  text_pointer outer);

}  // namespace tovan

#endif
