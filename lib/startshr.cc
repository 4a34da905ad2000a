// startshr.cc: a child that shares our memory until its program runs.
//
// fork() copies the page tables: 20 ms for a process of 1 GB, where the
// program itself starts in a quarter of one. vfork() copies nothing. The
// child runs in our memory and on our stack while we stand still, so it must
// leave nothing behind there but its answer:
//   - it allocates nothing: the buffer for the candidates is made before;
//   - no handler of ours may run in it: the caller has blocked all signals,
//     and in the child handlers go back to the default, as exec would do
//     anyway, before the mask is restored;
//   - descriptors and dispositions are its own, they are not shared.
// Whatever does not work is not explained here: the child ends, and the
// caller starts again with fork(), whose child says what is wrong.
// A vfork() that copies after all (under some emulators) cannot answer; its
// failed child is then seen as a command that ended with status 127.
#include "execstr.h"

#include "ident.h"
#include "private_execstr.h"
#include "wait4pid.h"

#include <errno.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int cannot_start = 127;

// What the child needs; of all this it changes the candidate and `failed`.
struct launch {
    int in;
    int out;
    int err;
    char **argv;
    const char *path;
    const sigset_t *mask;
    dy candidate;
    volatile bool failed;
};

// The path for the command, and room for its longest candidate.
void prepare(launch &plan) {
    const char *name = plan.argv[0];
    plan.path = strchr(name, '/') != nullptr ? "" : tovan::path_in_force();
    size_t longest = strlen(plan.path) + strlen("/") + strlen(name) + 1;
    dyreuse(&plan.candidate, static_cast<int>(longest));
}

void drop_handlers() {
    for (int number = 1; number < NSIG; number++) {
        struct sigaction action;
        if (sigaction(number, nullptr, &action) == -1) continue;
        if (action.sa_handler == SIG_DFL || action.sa_handler == SIG_IGN) {
            continue;
        }
        action.sa_handler = SIG_DFL;
        action.sa_flags = 0;
        sigaction(number, &action, nullptr);
    }
}

// Returns when nothing could be run, or something calls for more than going
// on with the next candidate.
void run_candidates(launch &plan) {
    const char *path = plan.path;
    while (path != nullptr) {
        path = tryfile(path, plan.argv[0], &plan.candidate);
        execv(plan.candidate.buffer, plan.argv);
        if (errno == ENOEXEC || errno == ENOMEM || errno == ETXTBSY) return;
    }
}

// The child.
[[noreturn]] void become(launch &plan) {
    if (tovan::place_descriptors(plan.in, plan.out, plan.err) == nullptr) {
        closeonfork(2, -1);
        savesigs(1, 1);
        drop_handlers();
        sigprocmask(SIG_SETMASK, plan.mask, nullptr);
        run_candidates(plan);
    }
    plan.failed = true;
    _exit(cannot_start);
}

void reap(pid_t child) {
    while (waitpid(child, nullptr, 0) == -1 && errno == EINTR) {
    }
}

}  // namespace

pid_t tovan::start_sharing(int in, int out, int err, char **argv,
                           const sigset_t *mask) {
    launch plan = {};
    plan.in = in;
    plan.out = out;
    plan.err = err;
    plan.argv = argv;
    plan.mask = mask;
    prepare(plan);
    pid_t child = vfork();
    if (child == 0) become(plan);
    if (child != -1 && plan.failed) {
        reap(child);
        child = -1;
    }
    free(plan.candidate.buffer);
    return child;
}

TOVAN_IDENT(startshr, "8.4", "26/11/21")
