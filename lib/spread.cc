// spread.cc: the general word alone, so that a program may define its own.
#include "findfile.h"

#include "ident.h"
#include "private_findfile.h"

void spread(const char *start, const char *end, int use_defaults, dy *output) {
    tovan::spread(start, end, use_defaults, output);
}

TOVAN_IDENT(spread, "8.4", "26/11/21")
