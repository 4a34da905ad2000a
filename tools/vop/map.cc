// map.cc: paths through the root maps.
#include "vop/vop.h"

#include <stdio.h>
#include <stdlib.h>
#include <tovan/dystr.h>
#include <tovan/map_root.h>

namespace {

constexpr const char *explanation[] = {
    "Maps paths through the root maps of the installation and of the user.",
    "",
    "Example: vop map /u/src",
    nullptr,
};

int run(char **arguments) {
    dy mapped;
    dynew(&mapped, 0);
    for (char **path = vop::plain_arguments(arguments, 1); *path != nullptr;
         path++) {
        dytruncate(&mapped, 0);
        map_root(*path, &mapped);
        puts(mapped.buffer);
    }
    free(mapped.buffer);
    return 0;
}

}  // namespace

constinit const vop::command vop::map = {"map", "map PATH...", explanation,
                                         ::run};
