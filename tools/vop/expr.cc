// expr.cc: integer arithmetic.
#include "vop/vop.h"

#include <stdio.h>
#include <tovan/errexit.h>
#include <tovan/evalarit.h>

namespace {

constexpr const char *explanation[] = {
    "Evaluates integer expressions, each to a line.",
    "32-bit numbers, decimal, octal (0...) or hexadecimal (0x...), and the",
    "operators of C, the conditional included.",
    "",
    "Example: vop expr '(1 + 2) * 3 << 1'",
    nullptr,
};

int run(char **arguments) {
    for (char **text = vop::raw_arguments(arguments, 1); *text != nullptr;
         text++) {
        int value = 0;
        const char *wrong = evalarith(*text, &value, nullptr);
        if (wrong != nullptr) errexit("`%s': %s", *text, wrong);
        printf("%d\n", value);
    }
    return 0;
}

}  // namespace

constinit const vop::command vop::expr = {"expr", "expr EXPRESSION...",
                                          explanation, ::run};
