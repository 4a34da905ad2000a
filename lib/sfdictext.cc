// sfdictext.cc: operations on one name of the dictionary.
#include "sfdict.h"

#include "ident.h"
#include "private_sfdict.h"
#include "private_sfproc.h"
#include "private_sfterm.h"

#include <string.h>

using tovan::sf_term;

namespace {

// A value's expansion. Filled by expanded(), valid until its next call; kept
// for its room.
constinit dy expansion{};

// The text that an operation brings; null for none.
const dy *expanded(const char *value, const char *where, int line) {
    if (value == nullptr) return nullptr;
    sf_proc(value, &expansion, 1, nullptr, where, line);
    return &expansion;
}

bool is_not_set(const dy *text) {
    constexpr char mark[] = "@NotSet";
    return text->length == sizeof mark - 1 &&
           memcmp(text->buffer, mark, sizeof mark) == 0;
}

bool is_same(const dy *a, const dy *b) {
    return a->length == b->length &&
           memcmp(a->buffer, b->buffer, static_cast<size_t>(a->length)) == 0;
}

void set_origin(sf_term *term, const char *where, int line) {
    term->where = where;
    term->line = line;
}

// Deliberate: a value that stays the same stays where it was defined (test
// same_value_keeps_its_place).
void replace_value(sf_term *term, const dy *text, const char *where, int line) {
    if (is_not_set(text)) return tovan::remove_term(term);
    if (is_same(text, &term->value)) return;
    dytruncate(&term->value, 0);
    dynstr(&term->value, text->buffer, text->length);
    set_origin(term, where, line);
}

void append_to_value(sf_term *term, const dy *text, const char *where,
                     int line) {
    dyaddc(&term->value, ' ');
    dynstr(&term->value, text->buffer, text->length);
    set_origin(term, where, line);
}

void alter(sf_term *term, int operation, const dy *text, const char *where,
           int line) {
    bool is_empty = term->value.length == 0;
    switch (operation) {
        case tovan::sf_unset:
            return tovan::remove_term(term);
        case tovan::sf_unset_if_empty:
            if (is_empty) tovan::remove_term(term);
            return;
        case tovan::sf_set_if_undefined:
            return;
        case tovan::sf_set_if_empty:
            if (!is_empty) return;
            break;
        case tovan::sf_append:
            if (text == nullptr || is_empty) break;
            return append_to_value(term, text, where, line);
        default:
            break;
    }
    if (text != nullptr) replace_value(term, text, where, line);
}

}  // namespace

// Deliberate: a name that is not defined is created by every operation that
// brings a text, "unsetifnil" too (test undefined_names_are_created).
void sf_dictext(const char *name, const char *value, const char *where,
                int line, int operation) {
    if (value == nullptr && operation == tovan::sf_set)
        operation = tovan::sf_unset;
    size_t length = strlen(name);
    tovan::expect_term(name, length);
    const dy *text =
        operation == tovan::sf_unset ? nullptr : expanded(value, where, line);
    sf_term *term = tovan::find_term(name, length);
    if (term != nullptr) return alter(term, operation, text, where, line);
    if (text == nullptr || is_not_set(text)) return;
    tovan::add_term(name, length, text, where, line);
}

TOVAN_IDENT(sfdictext, "8.4", "26/11/21")
