// glob.cc: paths that match patterns.
#include "vop/vop.h"

#include <stdio.h>
#include <tovan/globber.h>

namespace {

constexpr const char *explanation[] = {
    "Writes the paths that match patterns, in the order of the directories.",
    "Status 1 when there are none.",
    "",
    "Example: vop glob 'src/*.{c,h}' | sort",
    nullptr,
};

int run(char **arguments) {
    int status = 1;
    for (char **pattern = vop::plain_arguments(arguments, 1);
         *pattern != nullptr; pattern++) {
        for (char *found = globber(*pattern); found != nullptr;
             found = globber(nullptr)) {
            puts(found);
            status = 0;
        }
    }
    return status;
}

}  // namespace

constinit const vop::command vop::glob = {"glob", "glob PATTERN...",
                                          explanation, ::run};
