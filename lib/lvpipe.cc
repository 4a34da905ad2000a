// lvpipe.cc: variables come from a running kivs.
#include "lvget.h"

#include "dystr.h"
#include "errexit.h"
#include "execstr.h"
#include "ident.h"
#include "private_exit.h"
#include "private_io.h"
#include "private_lvget.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

namespace {

// "<kivs -p ..." Filled by each lvpipe(); holds until the next one; never
// released.
constinit dy command{};

// Deliberate: the "<" makes messages about a failed read name the command as
// if it were a file that is read (test names_the_command_with_a_less).
void form_command(int r, const char *d, const char *c) {
    dyreuse(&command, 64);
    dystr(&command, "<kivs -p");
    if (r != 0) dystr(&command, " -r");
    if (c != nullptr) dyfmt(&command, " -c@s", c);
    if (d != nullptr) dyfmt(&command, " -d@s", d);
}

// Out of the way of standard input, output and error, which may be closed in
// the caller and are given away in the child.
int moved_up(int descriptor) {
    if (descriptor > STDERR_FILENO) return descriptor;
    int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(descriptor);
    return moved;
}

void make_pipe(int ends[2]) {
    errcheck(pipe2(ends, O_CLOEXEC), "pipes(2)");
    for (int i = 0; i < 2; ++i)
        ends[i] = errcheck(moved_up(ends[i]), "pipes(2)");
}

[[noreturn]] void run_command(const int ends[2]) {
    tovan::leave_through_exit_now();
    close(STDIN_FILENO);
    errcheck(tovan::open_for_caller("/dev/null", O_RDONLY), "/dev/null");
    close(ends[0]);
    lclexit(execstr(STDIN_FILENO, ends[1], STDERR_FILENO, 0, 0,
                    command.buffer + 1));
}

}  // namespace

const char *tovan::pipe_name() {
    return command.buffer;
}

int lvpipe(int r, const char *d, pid_t *pid, const char *c) {
    form_command(r, d, c);
    int ends[2];
    make_pipe(ends);
    sanemode();
    fflush(stdout);
    fflush(stderr);
    *pid = errcheck(fork(), "fork(2) (for kivs)");
    if (*pid == 0) run_command(ends);
    close(ends[1]);
    return ends[0];
}

TOVAN_IDENT(lvpipe, "8.4", "26/11/21")
