// forkcmmd.cc: a command in a child.
#include "execstr.h"

#include "errexit.h"
#include "ident.h"
#include "private_execstr.h"
#include "private_exit.h"
#include "wait4pid.h"

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <unistd.h>

namespace {

[[noreturn]] void become(int in, int out, int err, char **argv,
                         const sigset_t *mask) {
    tovan::leave_through_exit_now();
    setstdfids(in, out, err);
    closeonfork(2, -1);
    savesigs(1, 1);
    sigprocmask(SIG_SETMASK, mask, nullptr);
    execcmmd(0, 1, 2, argv);
}

// Chosen: what cannot be started in a child that shares our memory is started
// again in a true copy of this process, which then says why, runs the exit
// hook, waits for a busy file or asks for the shell. A command that can be
// started never pays for the copy.
pid_t start(int in, int out, int err, char **argv, const sigset_t *mask) {
    pid_t child = tovan::start_sharing(in, out, err, argv, mask);
    if (child != -1) return child;
    child = fork();
    if (child == 0) become(in, out, err, argv, mask);
    return child;
}

// Starts the command and only then lets signals come, so that none finds
// them not yet ignored.
pid_t start_undisturbed(int in, int out, int err, char **argv) {
    sigset_t all;
    sigset_t mask;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, &mask);
    pid_t child = start(in, out, err, argv, &mask);
    int reason = errno;
    if (child != -1) savesigs(0, -1);
    sigprocmask(SIG_SETMASK, &mask, nullptr);
    errno = reason;
    return errcheck(child, "forkcmmd() fork(2)");
}

}  // namespace

int forkcmmd(int in, int out, int err, char **argv) {
    fflush(stdout);
    fflush(stderr);
    pid_t child = start_undisturbed(in, out, err, argv);
    // Chosen: a child that cannot be waited for (SIGCHLD is ignored) has not
    // succeeded as far as anybody can tell.
    int status = -1;
    waitforpid(child, &status);
    savesigs(0, 1);
    return status;
}

TOVAN_IDENT(forkcmmd, "8.4", "26/11/21")
