// vars.cc: the build tree's variables by pattern.
#include "vop/vop.h"

#include "shared/options.h"
#include "vop/listing.h"

#include <tovan/lvget.h>

namespace {

constexpr const char *explanation[] = {
    "Lists the build tree's variables, or those whose names match a pattern.",
    "Status 1 when there are none.",
    "",
    "-f HEAP\t\tread the variables from HEAP (- for standard input)",
    "",
    "Example: vop vars 'Tree*'",
    nullptr,
};

// Of entries with equal names the first of the chain is the one that counts.
int take_name(int, int, const char *name, const char *value) {
    if (lvvar(name) == value) vop::list_name(name);
    return 0;
}

int run(char **arguments) {
    const char *heap = nullptr;
    tools::options flags = tools::options_of(arguments);
    while (tools::next_flag(&flags, "f:", nullptr) != 0)
        heap = flags.value;
    lvget(0, nullptr, 0, heap, nullptr);
    vop::start_listing(flags.next);
    lvwalk(0, take_name);
    return vop::finish_listing(lvvar);
}

}  // namespace

constinit const vop::command vop::vars = {"vars", "vars [-f HEAP] [PATTERN...]",
                                          explanation, ::run};
