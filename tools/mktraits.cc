// mktraits.cc: writes this host's traits.
#include "mktraits/host.h"
#include "shared/heap_file.h"
#include "shared/manners.h"
#include "shared/options.h"

#include <stdio.h>
#include <tovan/trait.h>
#include <tovan/usage.h>

namespace {

constexpr char synopsis[] = "[-u]";

constexpr const char *explanation[] = {
    "Finds out limits and properties of this host and prints them, a line",
    "NAME=value each.",
    "",
    "-u\t\twrite them to the host's traits file instead: the one that",
    "\t\tTRAITS_FILE names, or data/traits/HOST.tab in the installation",
    "\t\t(MORVA), whose folder must be there",
    "-V FLAGS\ttrace on standard error: limits, search, heap, output or all,",
    "\t\twith levels (search=2); -V x explains them",
    "-x, --help\tdisplay this explanation",
    "--version\tdisplay the version",
    nullptr,
};

// Everybody on the host reads the traits, whoever had them made.
constexpr mode_t file_mode = 0644;

void write(const mktraits::trait_list &list) {
    tools::heap_contents contents = {};
    contents.variables = list.traits;
    contents.count = list.count;
    tools::replace_heap(traits_file(0), &contents, file_mode);
}

void print(const mktraits::trait_list &list) {
    for (size_t i = 0; i < list.count; i++) {
        printf("%s=%s\n", list.traits[i].name, list.traits[i].value);
    }
}

// Whether the traits are to be written.
bool take_flags(char **arguments) {
    bool writes = false;
    tools::options flags = tools::options_of(arguments);
    while (tools::next_flag(&flags, "u", nullptr) == 'u')
        writes = true;
    if (*flags.next != nullptr) usage("%s: no argument is taken", *flags.next);
    return writes;
}

}  // namespace

int main(int, char **argv) {
    tools::start(argv[0]);
    usestrs(synopsis, explanation);
    bool writes = take_flags(argv + 1);
    mktraits::trait_list list = mktraits::ask_host();
    if (writes) {
        write(list);
    } else {
        print(list);
    }
    tools::finish(0);
}
