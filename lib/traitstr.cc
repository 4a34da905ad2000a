// traitstr.cc: the value of one trait.
#include "trait.h"

#include "errexit.h"
#include "ident.h"
#include "private_trait.h"

#include <limits.h>
#include <stdlib.h>

namespace {

constexpr int not_read = -1;
constexpr int default_maxleaf = 14;

// MAXLEAFLEN. Filled by the first maxleaf(); holds for the process.
constinit int longest_leaf = not_read;

// Chosen: the nearest int, as strtol() gives the nearest long.
int number_of(const char *text) {
    long number = strtol(text, nullptr, 10);
    if (number > INT_MAX) return INT_MAX;
    if (number < INT_MIN) return INT_MIN;
    return static_cast<int>(number);
}

}  // namespace

const char *trait_str(const char *name, const char *fallback, int must) {
    const char *value = getenv(name);
    if (value == nullptr) value = trvar(name);
    if (value != nullptr) return value;
    if (must != 0) errexit("%s: trait not in table", name);
    return fallback;
}

int tovan::trait(const char *name, int fallback, int must) {
    const char *value = trait_str(name, nullptr, must);
    return value != nullptr ? number_of(value) : fallback;
}

int maxleaf(void) {
    if (longest_leaf == not_read) {
        longest_leaf = tovan::trait("MAXLEAFLEN", default_maxleaf, 0);
    }
    return longest_leaf;
}

TOVAN_IDENT(traitstr, "8.4", "26/11/21")
