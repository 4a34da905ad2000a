// traits.cc: the host's settings.
#include "vop/vop.h"

#include "vop/listing.h"

#include <tovan/errexit.h>
#include <tovan/trait.h>

namespace {

constexpr const char *explanation[] = {
    "Lists this host's traits, or those whose names match a pattern.",
    "An environment variable of the same name counts instead of the file.",
    "Status 1 when there are none.",
    "",
    "Example: vop traits '_T_*'",
    nullptr,
};

int take_name(int, int, const char *name, const char *) {
    vop::list_name(name);
    return 0;
}

const char *value_of(const char *name) {
    return trait_str(name, "", 0);
}

int run(char **arguments) {
    char **patterns = vop::plain_arguments(arguments, 0);
    if (!readtab()) errexit("%s: no traits", traits_file(0));
    vop::start_listing(patterns);
    traitwalk(0, take_name);
    return vop::finish_listing(value_of);
}

}  // namespace

constinit const vop::command vop::traits = {"traits", "traits [PATTERN...]",
                                            explanation, ::run};
