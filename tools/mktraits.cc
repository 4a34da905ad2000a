// mktraits.cc: writes this host's traits.
#include "mktraits/host.h"
#include "shared/heap_file.h"
#include "shared/manners.h"

#include <stdio.h>
#include <string.h>
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

bool is_one_of(const char *word, const char *letter, const char *name) {
    return strcmp(word, letter) == 0 || strcmp(word, name) == 0;
}

// Whether the traits are to be written; other options end here.
bool take_options(char **argument) {
    bool writes = false;
    for (; *argument != nullptr; argument++) {
        if (is_one_of(*argument, "-x", "--help")) {
            explflags();
            tools::finish(0);
        }
        if (strcmp(*argument, "--version") == 0) {
            tools::print_version();
            tools::finish(0);
        }
        if (strcmp(*argument, "-u") != 0) {
            usage("%s: invalid argument", *argument);
        }
        writes = true;
    }
    return writes;
}

}  // namespace

int main(int, char **argv) {
    tools::start(argv[0]);
    usestrs(synopsis, explanation);
    bool writes = take_options(argv + 1);
    mktraits::trait_list list = mktraits::ask_host();
    if (writes) {
        write(list);
    } else {
        print(list);
    }
    tools::finish(0);
}
