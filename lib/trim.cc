// trim.cc: the exported name of trimming.
#include "strutil.h"

#include "ident.h"
#include "private_strutil.h"

char *trim(char *text) {
    return tovan::trim(text);
}

TOVAN_IDENT(trim, "8.4", "26/11/21")
