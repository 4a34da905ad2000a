// variables.cc: the variables that a subcommand works on.
#include "vop/variables.h"

#include "shared/options.h"
#include "shared/trace.h"

#include <stdlib.h>
#include <string.h>
#include <tovan/errexit.h>
#include <tovan/lvget.h>

namespace {

TOOL_TRACE(heap, "where variables come from, and each of them (2)")

// As lvget() chooses it.
const char *source_of(const char *heap) {
    if (heap == nullptr) heap = getenv("KIVS_FILE");
    if (heap == nullptr) return "a running kivs -p";
    return strcmp(heap, "-") == 0 ? "standard input" : heap;
}

// How many variables were walked. Filled by count_variable().
constinit size_t variables = 0;

int count_variable(int, int, const char *name, const char *value) {
    variables++;
    if (ddt_trace(&trace_heap, 2, 1)) eprintf("%s = %s\n", name, value);
    return 0;
}

void trace_variables() {
    variables = 0;
    lvwalk(0, count_variable);
    if (ddt_trace(&trace_heap, 1, 1)) {
        eprintf("%zu variables, from %lu lines\n", variables,
                static_cast<unsigned long>(lvgen_lc()));
    }
}

}  // namespace

char **vop::take_heap_flag(char **arguments, const char **heap) {
    *heap = nullptr;
    tools::options flags = tools::options_of(arguments);
    while (tools::next_flag(&flags, "f:", nullptr) != 0)
        *heap = flags.value;
    return flags.next;
}

void vop::load_variables(const char *heap) {
    if (ddt_trace(&trace_heap, 1, 1)) eprintf("from %s\n", source_of(heap));
    lvget(0, nullptr, 0, heap, nullptr);
    if (ddt_trace(&trace_heap, 1, 0)) trace_variables();
}
