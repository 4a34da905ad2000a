// errcheck.cc: system calls that must not fail.
#include "errexit.h"

#include "ident.h"

int errcheck(int result, const char *description) {
    if (result == -1) errexit("%s: %s", description, syserr());
    return result;
}

void *ferrcheck(void *pointer, const char *description) {
    if (pointer == nullptr) errexit("%s: %s", description, syserr());
    return pointer;
}

TOVAN_IDENT(errcheck, "8.4", "26/11/21")
