// sfvalvar.cc: values of names.
#include "sfdict.h"

#include "ident.h"
#include "private_sfterm.h"

#include <string.h>

namespace {

// What undefined names are worth. Set by sf_setnotset(), the caller's text.
constinit const char *undefined = "";

}  // namespace

const char *tovan::text_of_undefined() {
    return undefined;
}

const char *sf_valvar(const char *name, int length, const char **where,
                      int *line) {
    size_t n = length < 0 ? strlen(name) : static_cast<size_t>(length);
    const tovan::sf_term *term = tovan::find_term(name, n);
    if (where != nullptr) *where = term != nullptr ? term->where : nullptr;
    if (line != nullptr) *line = term != nullptr ? term->line : 0;
    return term != nullptr ? term->value.buffer : undefined;
}

void sf_setnotset(const char *value) {
    undefined = value;
}

TOVAN_IDENT(sfvalvar, "8.4", "26/11/21")
