// expand.cc: texts over the build tree's variables.
#include "vop/vop.h"

#include "shared/trace.h"
#include "vop/variables.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/dystr.h>
#include <tovan/errexit.h>
#include <tovan/getdylin.h>
#include <tovan/lvexpand.h>
#include <tovan/usage.h>

namespace {

TOOL_TRACE(expand, "each text before it is expanded")

constexpr const char *explanation[] = {
    "Expands texts over the build tree's variables.",
    "The texts are the arguments, or the lines of standard input. An error",
    "names the place and ends the program.",
    "",
    "-f HEAP\t\tread the variables from HEAP (- for standard input) instead of",
    "\t\tfrom KIVS_FILE or a running kivs -p",
    "",
    "Example: vop expand 'cc -c @(findfile main.c)'",
    nullptr,
};

void expand_text(const char *text, dy *expanded, const char *where, int line) {
    if (ddt_trace(&trace_expand, 1, 1))
        eprintf("%s:%d: %s\n", where, line, text);
    dytruncate(expanded, 0);
    lvexpand(text, expanded, where, line);
    dyaddc(expanded, '\n');
    fwrite(expanded->buffer, 1, static_cast<size_t>(expanded->length), stdout);
}

void expand_input(dy *expanded) {
    dy line{};
    for (int number = 1; getdyline(stdin, &line, 0) != nullptr; number++)
        expand_text(line.buffer, expanded, "standard input", number);
    free(line.buffer);
}

int run(char **arguments) {
    const char *heap;
    char **texts = vop::take_heap_flag(arguments, &heap);
    if (*texts == nullptr && heap != nullptr && strcmp(heap, "-") == 0)
        usage("texts and variables cannot both come from standard input");

    vop::load_variables(heap);
    dy expanded;
    dynew(&expanded, 0);
    if (*texts == nullptr) expand_input(&expanded);
    for (int i = 0; texts[i] != nullptr; i++)
        expand_text(texts[i], &expanded, "argument", i + 1);
    free(expanded.buffer);
    return 0;
}

}  // namespace

constinit const vop::command vop::expand = {
    "expand", "expand [-f HEAP] [TEXT...]", explanation, ::run};
