// dup2.cc: the word dup2, alone: a program that calls it links this one in
// place of the C library's.
#include "execstr.h"

#include "ident.h"
#include "private_execstr.h"

#include <unistd.h>

// Some systems declare it noexcept, some do not; so is this.
int dup2(int from, int to) noexcept(noexcept(::dup2(0, 0))) {
    return tovan::dup_onto(from, to);
}

TOVAN_IDENT(dup2, "8.4", "26/11/21")
