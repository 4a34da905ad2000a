// closbrak.cc: matching brackets.
#include "strutil.h"

#include "ident.h"

char *closing_bracket(const char *text, int open, int close) {
    const char opening = static_cast<char>(open);
    const char closing = static_cast<char>(close);
    size_t depth = 0;  // of brackets inside the one that is looked for
    for (; *text != '\0'; text++) {
        if (*text == closing) {
            if (depth-- == 0) break;
        } else if (*text == opening) {
            depth++;
        }
    }
    return const_cast<char *>(text);
}

TOVAN_IDENT(closbrak, "8.4", "26/11/21")
