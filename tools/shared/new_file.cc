// new_file.cc: files that are written whole or not at all.
#include "shared/new_file.h"

#include "shared/trace.h"

#include <stdio.h>
#include <sys/stat.h>
#include <tovan/dystr.h>
#include <tovan/errexit.h>
#include <tovan/private_opentmp.h>
#include <unistd.h>

namespace {

TOOL_TRACE(output, "the file that is written, and its change of name")

// The new file until it is in its place; empty before and after. Removed when
// the tool ends meanwhile.
constinit dy unfinished{};

void remove_unfinished(int) {
    if (unfinished.length > 0) unlink(unfinished.buffer);
}

void refuse_device(const char *file) {
    struct stat status;
    if (stat(file, &status) == 0 && !S_ISREG(status.st_mode)) {
        errexit("%s: not a regular file", file);
    }
}

}  // namespace

int tools::begin_file(const char *file) {
    refuse_device(file);
    set_exit_rtn(remove_unfinished);
    dyreuse(&unfinished, 64);
    dyfmt(&unfinished, "@s.XXXXXX", file);
    int descriptor = tovan::make_unique(unfinished.buffer);
    if (descriptor == -1) dytruncate(&unfinished, 0);
    errcheck(descriptor, file);
    if (ddt_trace(&trace_output, 1, 1)) eprintf("%s\n", unfinished.buffer);
    return descriptor;
}

void tools::finish_file(const char *file, int descriptor, mode_t permissions) {
    errcheck(fchmod(descriptor, permissions), file);
    errcheck(close(descriptor), file);
    errcheck(rename(unfinished.buffer, file), file);
    if (ddt_trace(&trace_output, 1, 1)) eprintf("it is %s now\n", file);
    dytruncate(&unfinished, 0);
}
