// isvopfil.cc: the names of the build system's control files.
#include "dospath.h"

#include "ident.h"

#include <string.h>

int isvopfil(const char *name) {
    return strcmp(name, "vopfile") == 0 || strcmp(name, "vopfile2") == 0;
}

TOVAN_IDENT(isvopfil, "8.4", "26/11/21")
