// fmreport.cc: what a file-name match writes to standard error.
#include "private_fmreport.h"

#include "ident.h"
#include "private_error.h"

#include <stdio.h>

using tovan::text_pointer;

namespace {

const char *shown(text_pointer text) {
    return text != nullptr ? tovan::as_string(text) : "NULL";
}

}  // namespace

// Chosen: levels beyond 0x1ff keep their low bits only, so that the mark can
// always be read.
void tovan::show_step(const char *sign, int mark, int level, int depth,
                      text_pointer pattern, text_pointer subject,
                      text_pointer close) {
    for (int i = 0; i < level; ++i)
        fputs("  ", stderr);
    error("%s%04o: %d: p=%s; f=%s; pc=%s", sign,
          static_cast<unsigned>(mark + (level & 0x1ff)), depth, shown(pattern),
          shown(subject), shown(close));
}

void tovan::report_depth(text_pointer whole) {
    error("{} nesting too deep in %s", shown(whole));
}

void tovan::report_close(text_pointer whole, text_pointer pattern,
                         text_pointer close, text_pointer outer) {
    error("p=%s; pc=%s, stk=%s", shown(pattern), shown(close), shown(outer));
    error("Whoops: logic error in fmatch for pattern '%s'", shown(whole));
}

TOVAN_IDENT(fmreport, "8.4", "26/11/22")
