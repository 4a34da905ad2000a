// trace.h: what a tool can trace (<tovan/ddt.h>).
//
//     TOOL_TRACE(heap, "where the variables come from")
//     ...
//     if (ddt_trace(&trace_heap, 1, 1)) eprintf("%s\n", file);
//
// The user switches it on with -V heap, or -V heap=2 for level 2, or in the
// environment with <tool>_debug=heap. A program lists its packages:
//
//     strings <tool> | sed -n 's/^@(#)//p' | grep '^-D'
#ifndef TOVAN_TOOLS_TRACE_H
#define TOVAN_TOOLS_TRACE_H

#include <stddef.h>
#include <tovan/ddt.h>

namespace tools {

// A package with levels, not looked up yet; the flag "all" speaks of it too.
template <size_t size>
consteval ddt trace_package(const char (&name)[size]) {
    static_assert(size - 1 <= sizeof(ddt::name));
    ddt package{};
    package.level = 65535;
    for (size_t i = 0; i + 1 < size; i++)
        package.name[i] = name[i];
    package.name_length = static_cast<int>(size - 1);
    package.accepts_all = 1;
    package.initialiser = ddt_level_init;
    return package;
}

}  // namespace tools

// Defines the package trace_NAME, and the program's promise that it has it.
#define TOOL_TRACE(name, subject)                                     \
    constinit ddt trace_##name = tools::trace_package(#name);         \
    [[gnu::used, gnu::retain]] constinit const char listed_##name[] = \
        "@(#)-D" #name "|all\t" subject;

#endif
