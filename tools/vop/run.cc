// run.cc: command lines, run or looked at.
#include "vop/vop.h"

#include "shared/options.h"
#include "shared/trace.h"

#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <tovan/chkalloc.h>
#include <tovan/dypadd.h>
#include <tovan/dystr.h>
#include <tovan/errexit.h>
#include <tovan/execstr.h>
#include <tovan/private_split.h>
#include <tovan/usage.h>

namespace {

TOOL_TRACE(run, "each command line, and its wait status")

constexpr const char *explanation[] = {
    "Runs a command line: directly, or through the shell where it needs one.",
    "The status is the command's, or 128 and the signal that ended it.",
    "",
    "-n\t\tdo not run it: say how it would run, and its words",
    "",
    "Example: vop run -n 'cc -c \"my file.c\"'",
    nullptr,
};

constexpr int signal_base = 128;  // as shells report a signal

int run_line(const char *line) {
    if (ddt_trace(&trace_run, 1, 1)) eprintf("%s\n", line);
    int status = execstr(0, 1, 2, 1, 0, line);
    if (ddt_trace(&trace_run, 1, 1)) eprintf("0x%04x\n", status);
    if (WIFSIGNALED(status)) return signal_base + WTERMSIG(status);
    return WEXITSTATUS(status);
}

int show_line(const char *line) {
    dyp words{};
    dypreuse(&words);
    char *copy = savestr(line);
    if (tovan::split_line(copy, &words)) {
        puts("directly:");
        for (int i = 0; i < words.count; i++)
            printf("\t%s\n", static_cast<char *>(words.array[i]));
    } else {
        puts("through the shell");
    }
    free(copy);
    free(words.array);
    return 0;
}

int run(char **arguments) {
    bool shows = false;
    tools::options flags = tools::options_of(arguments);
    while (tools::next_flag(&flags, "n", nullptr) != 0)
        shows = true;
    if (*flags.next == nullptr) usage("no command given");
    dy line;
    dynew(&line, 0);
    for (char **word = flags.next; *word != nullptr; word++) {
        dyaddspace(&line);
        dystr(&line, *word);
    }
    int status = shows ? show_line(line.buffer) : run_line(line.buffer);
    free(line.buffer);
    return status;
}

}  // namespace

constinit const vop::command vop::run = {"run", "run [-n] COMMAND...",
                                         explanation, ::run};
