// srcs.cc: source files along SrcPath.
#include "vop/vop.h"

#include "shared/trace.h"
#include "vop/variables.h"

#include <stdio.h>
#include <tovan/errexit.h>
#include <tovan/lvget.h>
#include <tovan/usage.h>

namespace {

TOOL_TRACE(search, "which source files are found, and looked for (2)")

constexpr const char *explanation[] = {
    "Finds source files in the directories of the variable SrcPath.",
    "Status 1 when a file is not found.",
    "",
    "-f HEAP\t\tread the variables from HEAP (- for standard input)",
    "",
    "Example: vop srcs main.c util.c",
    nullptr,
};

const char *find_source(const char *file) {
    for (char **folder = lvsrcdirs(1); *folder != nullptr; folder++) {
        if (ddt_trace(&trace_search, 2, 1)) eprintf("%s/%s?\n", *folder, file);
    }
    const char *found = lvfndsrc(file, nullptr);
    if (ddt_trace(&trace_search, 1, 1))
        eprintf("%s: %s\n", file, found != nullptr ? found : "none");
    return found;
}

int run(char **arguments) {
    const char *heap;
    char **files = vop::take_heap_flag(arguments, &heap);
    if (*files == nullptr) usage("no file given");
    vop::load_variables(heap);
    int status = 0;
    for (char **file = files; *file != nullptr; file++) {
        const char *found = find_source(*file);
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
