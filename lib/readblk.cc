// readblk.cc: blocks of a known size.
#include "lvget.h"

#include "ident.h"
#include "private_io.h"

int readblk(int descriptor, void *buffer, int count) {
    if (count < 1) return 0;
    auto size = static_cast<size_t>(count);
    return static_cast<int>(tovan::read_full(descriptor, buffer, size));
}

TOVAN_IDENT(readblk, "8.4", "26/11/21")
