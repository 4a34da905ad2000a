// fakeuse.cc: something to refer to.
#include "errexit.h"

#include "ident.h"

void fakeuse(void) {
}

TOVAN_IDENT(fakeuse, "8.4", "26/11/21")
