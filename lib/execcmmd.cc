// execcmmd.cc: becoming a command.
#include "execstr.h"

#include "errexit.h"
#include "ident.h"
#include "trait.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

namespace {

// Seconds that a busy file is given: 10, then 20, up to 60.
constexpr unsigned wait_step = 10;
constexpr unsigned longest_wait = 60;

// The shell for files in no executable format. Filled by the first one;
// holds for the process. The lookup may load the traits, which may be made by
// a command, which may be such a file: counted, so that it ends.
struct shell_state {
    const char *path;
    int lookups;
};
constinit shell_state shell{};

const char *shell_path() {
    if (shell.path != nullptr) return shell.path;
    if (shell.lookups++ > 0) {
        errexit("Logic error -- see %s", "errRecursiveExec(x-vopmisc)");
    }
    shell.path = trait_str("_T_binsh", "/bin/sh", 0);
    return shell.path;
}

[[noreturn]] void run_by_shell(char *file, char **argv) {
    const char *path = shell_path();
    argv[0] = file;
    argv[-1] = const_cast<char *>(path);
    execv(path, argv - 1);
    errexit("%s: No shell! See errNoshell(x-vopmisc)", path);
}

// Runs a file, waiting while it is busy.
//   result    why it cannot be run
int run(const char *file, char **argv) {
    for (unsigned wait = wait_step;; wait += wait_step) {
        execv(file, argv);
        if (errno != ETXTBSY) return errno;
        if (wait > longest_wait) errexit("%s: text busy", argv[0]);
        sleep(wait);
    }
}

}  // namespace

void execcmmd(int in, int out, int err, char **argv) {
    const char *name = argv[0];
    const char *path = strchr(name, '/') != nullptr ? "" : getpath();
    fflush(stdout);
    fflush(stderr);
    setstdfids(in, out, err);
    bool too_long = false;
    bool refused = false;
    dy candidate = {};
    while (path != nullptr) {
        path = tryfile(path, name, &candidate);
        int reason = run(candidate.buffer, argv);
        if (reason == ENOEXEC) run_by_shell(candidate.buffer, argv);
        if (reason == ENOMEM) errexit("%s: too large", name);
        too_long |= reason == E2BIG;
        refused |= reason == EACCES;
    }
    if (too_long) errexit("%s: arg list too long", name);
    if (refused) errexit("%s: file not executable", name);
    errexit("%s: not found", name);
}

TOVAN_IDENT(execcmmd, "8.4", "26/11/21")
