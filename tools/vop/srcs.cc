// srcs.cc: source files along SrcPath.
#include "vop/vop.h"

#include "shared/options.h"

#include <stdio.h>
#include <tovan/errexit.h>
#include <tovan/lvget.h>
#include <tovan/usage.h>

namespace {

constexpr const char *explanation[] = {
    "Finds source files in the directories of the variable SrcPath.",
    "Status 1 when a file is not found.",
    "",
    "-f HEAP\t\tread the variables from HEAP (- for standard input)",
    "",
    "Example: vop srcs main.c util.c",
    nullptr,
};

int run(char **arguments) {
    const char *heap = nullptr;
    tools::options flags = tools::options_of(arguments);
    while (tools::next_flag(&flags, "f:", nullptr) != 0)
        heap = flags.value;
    if (*flags.next == nullptr) usage("no file given");
    lvget(0, nullptr, 0, heap, nullptr);
    int status = 0;
    for (char **file = flags.next; *file != nullptr; file++) {
        const char *found = lvfndsrc(*file, nullptr);
        if (found != nullptr) {
            puts(found);
        } else {
            tovan_error("%s: %s: not found along SrcPath", progname, *file);
            status = 1;
        }
    }
    return status;
}

}  // namespace

constinit const vop::command vop::srcs = {"srcs", "srcs [-f HEAP] FILE...",
                                          explanation, ::run};
