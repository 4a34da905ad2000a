// newexport.cc: environment variables.
#include "errexit.h"

#include "ident.h"

#include <stdlib.h>

int newexport(const char *name, const char *value) {
    if (value != nullptr) return setenv(name, value, 1);
    unsetenv(name);
    return 0;
}

TOVAN_IDENT(newexport, "8.4", "26/11/21")
