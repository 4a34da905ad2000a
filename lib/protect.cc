// protect.cc: the word protect, alone: a program may use it for itself.
#include "execstr.h"

#include "ident.h"
#include "private_execstr.h"

int protect(int descriptor, int forbidden) {
    return tovan::protect(descriptor, forbidden);
}

TOVAN_IDENT(protect, "8.4", "26/11/21")
