// ingroup.cc: small questions about the process and its group.
#include "gethome.h"

#include "ident.h"

#include <unistd.h>

int ingroup(int a, int b) {
    return a == b;
}

int gidget(void) {
    return static_cast<int>(geteuid());
}

void dumb_dos_user(void) {
}

TOVAN_IDENT(ingroup, "8.4", "26/11/21")
