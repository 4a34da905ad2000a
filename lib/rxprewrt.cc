// rxprewrt.cc: replacement texts from the last match.
#include "rxpcomp.h"

#include "chkalloc.h"
#include "dystr.h"
#include "ident.h"

#include <stdlib.h>
#include <string.h>

namespace {

void add_pair(dy *text, int number) {
    if (number > matches.count) return;
    const char *start = matches.pair[number].start;
    const char *end = matches.pair[number].end;
    // Chosen: a sub-match that did not end has no text.
    if (start == nullptr || end == nullptr) return;
    dyspan(text, start, end);
}

// What a backslash and this character stand for; null: the backslash itself.
char control_character(char letter) {
    switch (letter) {
        case '\\':
            return '\\';
        case 'b':
            return '\b';
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case 't':
            return '\t';
        default:
            return '\0';
    }
}

// Adds what stands behind a backslash.
//   result    the first character that is to be read normally
const char *add_sequence(dy *text, const char *letter) {
    if ('0' <= *letter && *letter <= '9') {
        add_pair(text, *letter - '0');
        return letter + 1;
    }
    char character = control_character(*letter);
    if (character == '\0') {
        dyaddc(text, '\\');
        return letter;
    }
    dyaddc(text, character);
    return letter + 1;
}

}  // namespace

char *rxprewrite(const char *replacement) {
    dy text;
    dynew(&text, 0);
    for (;;) {
        const char *run_end = replacement + strcspn(replacement, "\\");
        dyspan(&text, replacement, run_end);
        if (*run_end == '\0') break;
        replacement = add_sequence(&text, run_end + 1);
    }
    char *result = savestr(text.buffer);
    free(text.buffer);
    return result;
}

TOVAN_IDENT(rxprewrt, "8.4", "26/11/21")
