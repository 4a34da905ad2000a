// ix.cc: paths back from the form with drive letters.
#include "vop/vop.h"

#include <stdio.h>
#include <stdlib.h>
#include <tovan/dospath.h>
#include <tovan/dystr.h>

namespace {

constexpr const char *explanation[] = {
    "Turns paths with drive letters and backslashes back into tree paths.",
    "",
    "Example: vop ix 'd:\\src\\main.c'",
    nullptr,
};

constexpr int empty_first = 1;  // flag of ixpath()

int run(char **arguments) {
    dy path;
    dynew(&path, 0);
    for (char **foreign = vop::plain_arguments(arguments, 1);
         *foreign != nullptr; foreign++)
        puts(ixpath(&path, *foreign, empty_first));
    free(path.buffer);
    return 0;
}

}  // namespace

constinit const vop::command vop::ix = {"ix", "ix PATH...", explanation, ::run};
