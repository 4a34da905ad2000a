// vop.cc: the library's services on the command line, a subcommand each.
#include "vop/vop.h"

#include "shared/manners.h"
#include "shared/options.h"

#include <stdio.h>
#include <string.h>
#include <tovan/usage.h>

namespace {

constexpr const vop::command *commands[] = {
    &vop::expand, &vop::vars, &vop::srcs, &vop::expr, &vop::match, &vop::rx,
    &vop::glob,   &vop::path, &vop::map,  &vop::dos,  &vop::ix,    &vop::names,
    &vop::traits, &vop::run,  &vop::fix,  &vop::dict,
};

constexpr char synopsis[] = "SUBCOMMAND [ARGUMENT...]";

constexpr const char *explanation[] = {
    "The services of libtovan on the command line.",
    "",
    "vop help\t\tlist the subcommands",
    "vop help SUBCOMMAND\texplain one, with an example",
    "",
    "-x, --help\t\tdisplay this explanation",
    "--version\t\tdisplay the version",
    nullptr,
};

const vop::command *find_command(const char *name) {
    for (const vop::command *command : commands) {
        if (strcmp(command->name, name) == 0) return command;
    }
    usage("%s: unknown subcommand (vop help lists them)", name);
}

void list_commands() {
    for (const vop::command *command : commands)
        printf("%s\t%s\n", command->name, command->explanation[0]);
    puts("help\tExplains a subcommand, or lists them.");
}

void explain(const vop::command *command) {
    usestrs(command->synopsis, command->explanation);
    explflags();
}

int help(char **names) {
    if (*names == nullptr) list_commands();
    for (; *names != nullptr; names++)
        explain(find_command(*names));
    return 0;
}

}  // namespace

char **vop::plain_arguments(char **arguments, int least) {
    tools::options flags = tools::options_of(arguments);
    tools::next_flag(&flags, "", nullptr);
    for (int i = 0; i < least; i++) {
        if (flags.next[i] == nullptr) usage("arguments are missing");
    }
    return flags.next;
}

char **vop::raw_arguments(char **arguments, int least) {
    const char *first = *arguments;
    if (first != nullptr &&
        (strcmp(first, "-x") == 0 || strcmp(first, "--help") == 0)) {
        explflags();
        tools::finish(0);
    }
    for (int i = 0; i < least; i++) {
        if (arguments[i] == nullptr) usage("arguments are missing");
    }
    return arguments;
}

int main(int, char **argv) {
    tools::start(argv[0]);
    usestrs(synopsis, explanation);
    tools::options flags = tools::options_of(argv + 1);
    tools::next_flag(&flags, "", nullptr);
    char **words = flags.next;
    if (*words == nullptr) usage("no subcommand (vop help lists them)");
    if (strcmp(*words, "help") == 0) tools::finish(help(words + 1));
    const vop::command *command = find_command(*words);
    usestrs(command->synopsis, command->explanation);
    tools::finish(command->run(words + 1));
}
