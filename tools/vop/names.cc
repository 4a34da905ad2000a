// names.cc: the host's system names.
#include "vop/vop.h"

#include "shared/options.h"

#include <stdio.h>
#include <tovan/sysnames.h>
#include <tovan/usage.h>

namespace {

constexpr const char *explanation[] = {
    "Writes the eight names by which the build system knows this host.",
    "",
    "-f TABLE\tread TABLE instead of data/sysnames.tab",
    "-l\t\tlist the table instead",
    "-t\t\ttrace the search on standard error",
    "",
    "Example: vop names",
    nullptr,
};

constexpr int field_count = 8;
constexpr int list_table = 1;  // flags of sysnames()
constexpr int trace_search = 4;

int run(char **arguments) {
    int wanted = 0;
    tools::options flags = tools::options_of(arguments);
    while (int flag = tools::next_flag(&flags, "f:lt", nullptr)) {
        if (flag == 'f') setsysnamestab(flags.value);
        if (flag == 'l') wanted |= list_table;
        if (flag == 't') wanted |= trace_search;
    }
    if (*flags.next != nullptr) usage("%s: no argument wanted", *flags.next);
    char **record = sysnames(wanted, nullptr);
    if (record == nullptr) return 0;
    for (int i = 0; i < field_count; i++)
        printf("%s\t%s\n", record[field_count + i], record[i]);
    return 0;
}

}  // namespace

constinit const vop::command vop::names = {"names", "names [-lt] [-f TABLE]",
                                           explanation, ::run};
