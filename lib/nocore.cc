// nocore.cc: out of memory.
#include "errexit.h"

#include "ident.h"
#include "private_io.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

// Deliberate: progname is not tested for null (header).
void nocore(void) {
    constexpr char message[] = ": Ran out of memory\n";
    tovan::write_full(STDERR_FILENO, progname, strlen(progname));
    tovan::write_full(STDERR_FILENO, message, sizeof message - 1);
    abort();
}

TOVAN_IDENT(nocore, "8.4", "26/11/21")
