// inclflgs.cc: include flags from the build tree's variables.
#include "dospath.h"

#include "ident.h"
#include "lvget.h"
#include "strutil.h"

namespace {

// Built by the first inclflgs(), without a buffer until then; never released.
constinit dy include_flags{};

void build_flags(const char *folders) {
    dynew(&include_flags, 0);
    if (folders == nullptr) return;
    for (;;) {
        const char *word = overwhite(folders);
        if (*word == '\0') return;
        folders = nextwhite(word);
        dyaddspace(&include_flags);
        dystr(&include_flags, "-I");
        dyspan(&include_flags, word, folders);
    }
}

}  // namespace

void inclflgs(dy *output) {
    if (include_flags.buffer == nullptr) build_flags(lvvar("InclPath"));
    dystr(output, include_flags.buffer);
}

TOVAN_IDENT(inclflgs, "8.4", "26/11/21")
