// new_file.cc: files that are written whole or not at all.
#include "shared/new_file.h"

#include "shared/trace.h"

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <sys/stat.h>
#include <tovan/dystr.h>
#include <tovan/errexit.h>
#include <tovan/private_opentmp.h>
#include <unistd.h>

namespace {

TOOL_TRACE(output, "the file that is written, and its change of name")

// The new file until it is in its place; empty before and after. Removed when
// the tool ends meanwhile, by itself or by one of these signals.
constinit dy unfinished{};
constexpr int ending_signals[] = {SIGHUP, SIGINT, SIGTERM};

// Removes the file and lets the signal end the process, as it would have done
// without us: it is blocked until this returns.
extern "C" void end_by_signal(int number) {
    tools::remove_unfinished();
    raise(number);
}

// What the caller of the tool ignores stays ignored.
void catch_signal(int number) {
    struct sigaction caught = {}, before;
    sigaction(number, nullptr, &before);
    if (before.sa_handler == SIG_IGN) return;
    caught.sa_handler = end_by_signal;
    caught.sa_flags = static_cast<int>(SA_RESETHAND);
    for (int other : ending_signals)
        sigaddset(&caught.sa_mask, other);
    sigaction(number, &caught, nullptr);
}

// Makes the file and its name known together: no signal comes in between.
int make_file(const char *file) {
    sigset_t ending, before;
    sigemptyset(&ending);
    for (int number : ending_signals)
        sigaddset(&ending, number);
    sigprocmask(SIG_BLOCK, &ending, &before);
    dyreuse(&unfinished, 64);
    dyfmt(&unfinished, "@s.XXXXXX", file);
    int descriptor = tovan::make_unique(unfinished.buffer);
    if (descriptor == -1) dytruncate(&unfinished, 0);
    int kept = errno;
    sigprocmask(SIG_SETMASK, &before, nullptr);
    errno = kept;
    return descriptor;
}

void refuse_device(const char *file) {
    struct stat status;
    if (stat(file, &status) == 0 && !S_ISREG(status.st_mode)) {
        errexit("%s: not a regular file", file);
    }
}

}  // namespace

void tools::remove_unfinished() {
    if (unfinished.length > 0) unlink(unfinished.buffer);
}

int tools::begin_file(const char *file) {
    refuse_device(file);
    for (int number : ending_signals)
        catch_signal(number);
    int descriptor = errcheck(make_file(file), file);
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
