// duponto.cc: a descriptor onto a given number.
#include "execstr.h"

#include "ident.h"
#include "private_execstr.h"

#include <fcntl.h>
#include <unistd.h>

int tovan::dup_onto(int from, int to) {
    if (fcntl(from, F_GETFL) == -1) return -1;
    // Chosen: closing it first would leave nothing to copy.
    if (from == to) return to;
    close(to);
    return fcntl(from, F_DUPFD, to);
}

TOVAN_IDENT(duponto, "8.4", "26/11/21")
