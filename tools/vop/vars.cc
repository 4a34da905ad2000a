// vars.cc: the build tree's variables by pattern.
#include "vop/vop.h"

#include "vop/listing.h"
#include "vop/variables.h"

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
    const char *heap;
    char **patterns = vop::take_heap_flag(arguments, &heap);
    vop::load_variables(heap);
    vop::start_listing(patterns);
    lvwalk(0, take_name);
    return vop::finish_listing(lvvar);
}

}  // namespace

constinit const vop::command vop::vars = {"vars", "vars [-f HEAP] [PATTERN...]",
                                          explanation, ::run};
