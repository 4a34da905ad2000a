// dict.cc: what dictionaries define.
#include "vop/vop.h"

#include "shared/options.h"

#include <tovan/sfdict.h>
#include <tovan/usage.h>

namespace {

constexpr const char *explanation[] = {
    "Lists the names that dictionaries define.",
    "They come sorted, in a form that can be read back. A wrong line is",
    "reported and gives status 1.",
    "",
    "-u\tput the place of its definition before each name",
    "",
    "Example: vop dict site.dict host.dict >all.dict",
    nullptr,
};

int run(char **arguments) {
    int with_places = 0;
    tools::options flags = tools::options_of(arguments);
    while (tools::next_flag(&flags, "u", nullptr) != 0)
        with_places = 1;
    if (*flags.next == nullptr) usage("arguments are missing");
    int status = 0;
    for (char **path = flags.next; *path != nullptr; path++)
        status |= sfdict(*path);
    sf_putdict(with_places);
    return status;
}

}  // namespace

constinit const vop::command vop::dict = {"dict", "dict [-u] DICT...",
                                          explanation, ::run};
