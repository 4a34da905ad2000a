// match.cc: a name against patterns, or a pattern against names.
#include "vop/vop.h"

#include "shared/trace.h"

#include <tovan/fmatch.h>

namespace {

TOOL_TRACE(match, "the steps of matching (fmatch_trace)")

constexpr const char *explanation[] = {
    "Tells by its status whether a name matches one of several patterns.",
    "Status 0 when one matches, 1 when none does.",
    "",
    "-rxp\t\tthe patterns are regular expressions",
    "-exact\t\tthey are the names themselves",
    "-reverse\tthe first argument is the pattern, the others are names",
    "",
    "Example: vop match main.c '*.{c,cc}' && echo a source",
    nullptr,
};

int run(char **arguments) {
    char **words = vop::raw_arguments(arguments, 1);
    fmatch_trace(ddt_trace(&trace_match, 1, 0));
    return patmatch(words) ? 0 : 1;
}

}  // namespace

constinit const vop::command vop::match = {
    "match", "match [-rxp | -exact] [-reverse] NAME PATTERN...", explanation,
    ::run};
