// rx.cc: lines that match a regular expression.
#include "vop/vop.h"

#include "shared/options.h"
#include "shared/trace.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/dystr.h>
#include <tovan/errexit.h>
#include <tovan/getdylin.h>
#include <tovan/rxpcomp.h>
#include <tovan/usage.h>
#include <unistd.h>

namespace {

TOOL_TRACE(rx, "the size of the program, and how many lines it sees")

constexpr const char *explanation[] = {
    "Writes the lines of files that match a regular expression.",
    "Without FILE it reads standard input. Status 0 when a line matched, 1",
    "when none did.",
    "",
    "-i\t\tlower-case letters of PATTERN match both cases",
    "-v\t\twrite the lines that do not match",
    "-o\t\twrite only what matched of each line",
    "-r TEMPLATE\twrite TEMPLATE for each line, \\0 to \\9 in it being the",
    "\t\tmatch and its sub-matches",
    "--dump\t\twrite the compiled program instead",
    "",
    "Groups are <...|...>, sub-matches \\(...\\); a leading ! inverts.",
    "",
    "Example: vop rx -r '\\1' '^#define \\(\\=\\)' config.h",
    nullptr,
};

constexpr tools::long_flag long_flags[] = {{"--dump", 'd'}, {nullptr, 0}};

struct options {
    bool folds;
    bool inverts;
    bool only_match;
    bool dumps;
    const char *replacement;  // null: none
    bool names_files;
};

// The causes by code, from -1 down.
constexpr const char *causes[] = {
    "bad bracket",
    "unknown error",
    "unknown error",
    "bad delimiter",
    "operator in the wrong place",
    "reference to a sub-match that is not closed",
    "pattern too long",
    "more than 9 sub-matches",
    "unbalanced groups, brackets or sub-matches",
    "the pattern ends too early",
};

void compile(const char *pattern, bool folds) {
    int length = rxpcomp(pattern, '\0', folds);
    if (length < 0) errexit("`%s': %s", pattern, causes[-length - 1]);
    if (ddt_trace(&trace_rx, 1, 1)) eprintf("%s: %d bytes\n", pattern, length);
}

void write_span(const char *start, const char *end) {
    if (end > start) fwrite(start, 1, static_cast<size_t>(end - start), stdout);
}

void write_match(const options *chosen, const char *name, const dy *line) {
    if (chosen->names_files) printf("%s:", name);
    if (chosen->replacement != nullptr) {
        char *text = rxprewrite(chosen->replacement);
        fputs(text, stdout);
        free(text);
    } else if (chosen->only_match && !chosen->inverts) {
        write_span(matches.pair[0].start, matches.pair[0].end);
    } else {
        write_span(line->buffer, line->buffer + line->length);
    }
    putchar('\n');
}

bool search(const options *chosen, int descriptor, const char *name) {
    long lines = 0;
    long written = 0;
    dy line{};
    rdy *reader = rdy_init(descriptor);
    while (rdy_getline(reader, &line, 0) != nullptr) {
        lines++;
        bool matched = rxpeval(line.buffer) == 1;
        if (matched == chosen->inverts) continue;
        written++;
        write_match(chosen, name, &line);
    }
    free(reader);
    free(line.buffer);
    if (ddt_trace(&trace_rx, 1, 1))
        eprintf("%s: %ld of %ld lines\n", name, written, lines);
    return written > 0;
}

bool search_file(const options *chosen, const char *name) {
    if (strcmp(name, "-") == 0) return search(chosen, STDIN_FILENO, name);
    int descriptor = errcheck(open(name, O_RDONLY | O_CLOEXEC), name);
    bool found = search(chosen, descriptor, name);
    close(descriptor);
    return found;
}

options take_options(tools::options *flags) {
    options chosen{};
    while (int flag = tools::next_flag(flags, "ivor:", long_flags)) {
        if (flag == 'i') chosen.folds = true;
        if (flag == 'v') chosen.inverts = true;
        if (flag == 'o') chosen.only_match = true;
        if (flag == 'd') chosen.dumps = true;
        if (flag == 'r') chosen.replacement = flags->value;
    }
    return chosen;
}

int run(char **arguments) {
    tools::options flags = tools::options_of(arguments);
    options chosen = take_options(&flags);
    if (*flags.next == nullptr) usage("no pattern given");
    compile(*flags.next, chosen.folds);
    if (chosen.dumps) {
        rxpdump(rxpbuf);
        return 0;
    }
    char **files = flags.next + 1;
    if (*files == nullptr) return search_file(&chosen, "-") ? 0 : 1;
    chosen.names_files = files[1] != nullptr;
    int status = 1;
    for (; *files != nullptr; files++) {
        if (search_file(&chosen, *files)) status = 0;
    }
    return status;
}

}  // namespace

constinit const vop::command vop::rx = {
    "rx", "rx [-iov] [-r TEMPLATE] [--dump] PATTERN [FILE...]", explanation,
    ::run};
