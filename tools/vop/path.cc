// path.cc: paths made plain.
#include "vop/vop.h"

#include "shared/options.h"

#include <stdio.h>
#include <stdlib.h>
#include <tovan/chkalloc.h>
#include <tovan/simplify.h>
#include <tovan/usage.h>

namespace {

constexpr const char *explanation[] = {
    "Takes \".\", \"..\" and repeated slashes out of paths.",
    "The paths need not exist.",
    "",
    "--resolve\tmake them absolute first, from the current directory",
    "",
    "Example: vop path a/./b//../c",
    nullptr,
};

constexpr tools::long_flag long_flags[] = {{"--resolve", 'r'}, {nullptr, 0}};

int run(char **arguments) {
    bool resolves = false;
    tools::options flags = tools::options_of(arguments);
    while (tools::next_flag(&flags, "", long_flags) != 0)
        resolves = true;
    if (*flags.next == nullptr) usage("no path given");
    for (char **path = flags.next; *path != nullptr; path++) {
        char *text = resolves ? p_resolve(*path, nullptr) : savestr(*path);
        puts(simplify(text, 0));
        free(text);
    }
    return 0;
}

}  // namespace

constinit const vop::command vop::path = {"path", "path [--resolve] PATH...",
                                          explanation, ::run};
