// mkstemp.cc: the word mkstemp, alone: a program that calls it links this one
// in place of the C library's.
#include "opentmp.h"

#include "ident.h"
#include "private_opentmp.h"

#include <errno.h>

// <stdlib.h> stays out: with 64-bit file offsets it gives the word another
// name, and this is the place that has to keep it.
extern "C" int mkstemp(char *pattern);

int mkstemp(char *pattern) {
    int descriptor = tovan::make_unique(pattern);
    if (descriptor == -1) errno = EEXIST;
    return descriptor;
}

TOVAN_IDENT(mkstemp, "8.4", "26/11/22")
