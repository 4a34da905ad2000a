// sfrefer.cc: reading references.
#include "private_sfrefer.h"

#include "dystr.h"
#include "ident.h"

using tovan::sf_reference;

namespace {

// What may be wrong with a reference.
constexpr char no_closing[] = "missing terminating '@'";
constexpr char not_closed[] = "terminating '@' missing";
constexpr char wrong_percent[] = "unsupported % operator";
constexpr char wrong_operator[] = "unsupported @ operator";
constexpr char wrong_hash[] = "unsupported @V#?@ operator";
constexpr char wrong_backslash[] = "unsupported @V\\?@ operator";

// An argument with escaped characters, without its backslashes. Filled by
// read_argument(), valid until its next call; kept for its room.
constinit dy unescaped{};

// Reads the "@" behind an operator that takes no argument.
const char *read_closing(sf_reference *found, const char *next) {
    if (*next != '@') return not_closed;
    found->after = next + 1;
    return nullptr;
}

const char *read_argument(sf_reference *found, const char *next) {
    const char *run = next;
    found->argument.start = next;
    dyreuse(&unescaped, 0);
    for (; *next != '@'; ++next) {
        if (*next == '\0') return no_closing;
        if (*next != '\\' || (next[1] != '@' && next[1] != '\\')) continue;
        dyspan(&unescaped, run, next);
        run = ++next;
    }
    found->argument.end = next;
    found->after = next + 1;
    if (run == found->argument.start) return nullptr;
    dyspan(&unescaped, run, next);
    found->argument = {unescaped.buffer, unescaped.buffer + unescaped.length};
    return nullptr;
}

const char *read_hash_form(sf_reference *found, const char *next) {
    found->variant = *next;
    switch (*next) {
        case 'd':
        case 'u':
        case 's':
        case ':':
            return read_closing(found, next + 1);
        case 'i':
            return read_argument(found, next + 1);
        default:
            return wrong_hash;
    }
}

const char *read_backslash_form(sf_reference *found, const char *next) {
    found->variant = *next;
    if (*next != '_' && *next != ':') return wrong_backslash;
    return read_argument(found, next + 1);
}

}  // namespace

const char *tovan::read_reference(sf_reference *found, const char *next) {
    if (*next == '%') {
        if (next[1] != 's') return wrong_percent;
        found->is_quoted = true;
        next += 2;
    }
    found->operation = *next;
    switch (*next) {
        case '@':
            return read_closing(found, next);
        case '?':
            return read_closing(found, next + 1);
        case ':':
        case '+':
        case '-':
        case '=':
        case '|':
            return read_argument(found, next + 1);
        case '#':
            return read_hash_form(found, next + 1);
        case '\\':
            return read_backslash_form(found, next + 1);
        case '\0':
            return no_closing;
        default:
            return wrong_operator;
    }
}

TOVAN_IDENT(sfrefer, "8.4", "26/11/21")
