// dos.cc: paths to the form with drive letters.
#include "vop/vop.h"

#include "shared/options.h"

#include <stdio.h>
#include <stdlib.h>
#include <tovan/dospath.h>
#include <tovan/dystr.h>
#include <tovan/usage.h>

namespace {

constexpr const char *explanation[] = {
    "Writes paths in the form with drive letters and backslashes.",
    "",
    "-0\t\tkeep \"/\"",
    "-1\t\tturn each \"/\" into one backslash (as without a flag)",
    "-2\t\tinto two, for a reader that takes one away",
    "-e EXTENSION\tput EXTENSION in place of the last \".\" and what follows",
    "",
    "Example: vop dos -e .obj //D/src/main.c",
    nullptr,
};

int run(char **arguments) {
    int mode = 1;
    const char *extension = nullptr;
    tools::options flags = tools::options_of(arguments);
    while (int flag = tools::next_flag(&flags, "012e:", nullptr)) {
        if (flag == 'e')
            extension = flags.value;
        else
            mode = flag - '0';
    }
    if (*flags.next == nullptr) usage("no path given");
    dy foreign;
    dynew(&foreign, 0);
    for (char **path = flags.next; *path != nullptr; path++)
        puts(dospath(&foreign, *path, extension, 1, mode));
    free(foreign.buffer);
    return 0;
}

}  // namespace

constinit const vop::command vop::dos = {
    "dos", "dos [-0 | -1 | -2] [-e EXTENSION] PATH...", explanation, ::run};
