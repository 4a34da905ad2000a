// listing.cc: sorted lists of names that match patterns.
#include "vop/listing.h"

#include <stdio.h>
#include <stdlib.h>
#include <tovan/dypadd.h>
#include <tovan/fmatch.h>
#include <tovan/strutil.h>

namespace {

// The list being made: walks hand their callbacks nothing of the caller's.
// Filled by list_name(), released by finish_listing().
struct listing {
    dyp names;
    char **patterns;
};
constinit listing current{};

bool is_wanted(const char *name) {
    if (*current.patterns == nullptr) return true;
    for (char **pattern = current.patterns; *pattern != nullptr; pattern++) {
        if (fmatch(name, *pattern)) return true;
    }
    return false;
}

}  // namespace

void vop::start_listing(char **patterns) {
    current.patterns = patterns;
    dypreuse(&current.names);
}

void vop::list_name(const char *name) {
    if (is_wanted(name)) dypadd(&current.names, name);
}

int vop::finish_listing(const char *(*value_of)(const char *name)) {
    size_t count = static_cast<size_t>(current.names.count);
    void **names = current.names.array;
    qsort(names, count, sizeof(void *), strpcmp);
    for (size_t i = 0; i < count; i++) {
        const char *name = static_cast<const char *>(names[i]);
        printf("%s = %s\n", name, value_of(name));
    }
    free(names);
    current = {};
    return count > 0 ? 0 : 1;
}
