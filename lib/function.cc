// function.cc: the general word alone, so that a program may define its own.
#include "lvexpand.h"

#include "ident.h"
#include "private_lvexpand.h"

char *function(char *text, dy *output) {
    return tovan::function(text, output);
}

TOVAN_IDENT(function, "8.4", "26/11/21")
