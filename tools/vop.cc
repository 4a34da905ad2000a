// vop.cc: the library's services on the command line, a subcommand each.
#include "vop/vop.h"

#include "shared/manners.h"
#include "shared/options.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/dypadd.h>
#include <tovan/dystr.h>
#include <tovan/fastout.h>
#include <tovan/usage.h>

namespace {

constexpr const vop::command *commands[] = {
    &vop::expand, &vop::vars, &vop::srcs, &vop::expr, &vop::match, &vop::rx,
    &vop::glob,   &vop::path, &vop::map,  &vop::dos,  &vop::ix,    &vop::names,
    &vop::traits, &vop::run,  &vop::fix,  &vop::dict, &vop::tmp,   &vop::db,
    &vop::ar,     &vop::tar,  &vop::cpio,
};

constexpr char synopsis[] = "SUBCOMMAND [ARGUMENT...]";

constexpr const char *explanation[] = {
    "The services of libtovan on the command line.",
    "",
    "-V FLAGS\ttrace on standard error: heap, expand, search, match, rx, run,",
    "\t\tfix, output or all, with levels (heap=2); -V x explains them",
    "-x, --help\tdisplay this explanation",
    "--version\tdisplay the version",
    "",
    "Subcommands:",
};

constexpr char help_name[] = "help";
constexpr char help_line[] =
    "help\tLists the subcommands, or explains those that are named.";

constexpr int page_width = 80;

// The explanation with a line for each subcommand. It lives as long as the
// program.
const char *const *whole_explanation() {
    dyp lines;
    dypnew(&lines, 32);
    for (const char *line : explanation)
        dypadd(&lines, line);
    dy text;
    dynew(&text, 80);
    for (const vop::command *command : commands) {
        dytruncate(&text, 0);
        dyfmt(&text, "@s\t@s", command->name, command->explanation[0]);
        dypadd(&lines, dycache(text.buffer, text.length));
    }
    free(text.buffer);
    void **all = dypadd(&lines, help_line);
    return const_cast<const char **>(reinterpret_cast<char **>(all));
}

const vop::command *find_command(const char *name) {
    for (const vop::command *command : commands) {
        if (strcmp(command->name, name) == 0) return command;
    }
    usage("%s: unknown subcommand (vop help lists them)", name);
}

void list_commands() {
    const char *names[sizeof commands / sizeof *commands + 2] = {};
    size_t count = 0;
    for (const vop::command *command : commands)
        names[count++] = command->name;
    names[count] = help_name;
    puts("Subcommands:\n");
    putcols("    ", names, page_width, 0);
    puts("\nvop help SUBCOMMAND explains one, vop -x each in a line.");
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
    usestrs(synopsis, whole_explanation());
    tools::options flags = tools::options_of(argv + 1);
    tools::next_flag(&flags, "", nullptr);
    char **words = flags.next;
    if (*words == nullptr) usage("no subcommand (vop help lists them)");
    if (strcmp(*words, help_name) == 0) tools::finish(help(words + 1));
    const vop::command *command = find_command(*words);
    usestrs(command->synopsis, command->explanation);
    tools::finish(command->run(words + 1));
}
