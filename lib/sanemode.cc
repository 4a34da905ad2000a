// sanemode.cc: the hook before a child that loads variables.
#include "errexit.h"

#include "ident.h"

int sanemode(void) {
    return 0;
}

TOVAN_IDENT(sanemode, "8.4", "26/11/21")
