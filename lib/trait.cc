// trait.cc: the word trait, alone: a program may use it for itself.
#include "trait.h"

#include "ident.h"
#include "private_trait.h"

int trait(const char *name, int fallback, int must) {
    return tovan::trait(name, fallback, must);
}

TOVAN_IDENT(trait, "8.4", "26/11/21")
