// nocore.cc: out of memory.
#include "errexit.h"

#include "ident.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace {

void write_once(const char *text, size_t length) {
    [[maybe_unused]] ssize_t put = write(STDERR_FILENO, text, length);
}

}  // namespace

// Deliberate: progname is not tested for null (header).
void nocore(void) {
    constexpr char message[] = ": Ran out of memory\n";
    write_once(progname, strlen(progname));
    write_once(message, sizeof message - 1);
    abort();
}

TOVAN_IDENT(nocore, "8.4", "26/11/21")
