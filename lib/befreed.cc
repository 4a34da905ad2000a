// befreed.cc: blocks that are released together at the end of a run.
#include "chkalloc.h"

#include "dypadd.h"
#include "ident.h"

#include <stdlib.h>
#include <string.h>

namespace {

constexpr int first_capacity = 20;

// What befreed() releases. Filled by tobefreed() and ptobefreed(), which make
// each list when it is first needed; holds until befreed(), which leaves the
// records as they are.
struct release_registry {
    dyp blocks;
    dyp variables;
};
constinit release_registry registry{};

void add(dyp *list, const void *entry) {
    if (list->array == nullptr) dypnew(list, first_capacity);
    dypadd(list, entry);
}

// What the pointer variable at `variable` holds, whatever it points to.
void *value_of(const void *variable) {
    void *value;
    memcpy(&value, variable, sizeof value);
    return value;
}

}  // namespace

void tobefreed(void *block) {
    add(&registry.blocks, block);
}

void ptobefreed(void *variable) {
    add(&registry.variables, variable);
}

void befreed(void) {
    const dyp &variables = registry.variables;
    for (int i = variables.count; i-- > 0;) {
        free(value_of(variables.array[i]));
    }
    free(variables.array);
    void **const blocks = registry.blocks.array;
    if (blocks == nullptr) return;
    for (void **block = blocks; *block != nullptr; block++)
        free(*block);
    free(blocks);
}

TOVAN_IDENT(befreed, "8.4", "26/11/21")
