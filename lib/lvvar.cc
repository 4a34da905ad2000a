// lvvar.cc: variables by name, and all of them.
#include "lvget.h"

#include "errexit.h"
#include "ident.h"
#include "private_lvget.h"

#include <string.h>

using tovan::heap_entry;
using tovan::variable_heap;

using variable_lookup = const char *(const char *name);
constinit variable_lookup *lvvarrtn = nullptr;

namespace {

// The build tree's variables. Filled by lvget(); holds until the next reload,
// which releases it.
constinit variable_heap heap{};

const heap_entry *find_variable(const char *name, size_t length) {
    return tovan::find_entry(tovan::loaded_variables("lvvar"), name, length);
}

}  // namespace

variable_heap *tovan::variables() {
    return &heap;
}

const variable_heap *tovan::loaded_variables(const char *caller) {
    if (!is_loaded(&heap)) {
        errexit("LOGIC ERROR: %s() called before lvget()", caller);
    }
    return &heap;
}

const char *tovan::variable_value(const char *name, size_t length) {
    const heap_entry *entry = find_variable(name, length);
    return entry != nullptr ? entry_value(entry) : nullptr;
}

const char *lvvar(const char *name) {
    return tovan::variable_value(name, strlen(name));
}

const char *lvvar_f(const char *name, int *flags) {
    const heap_entry *entry = find_variable(name, strlen(name));
    if (entry == nullptr) return nullptr;
    *flags = tovan::entry_flags(entry);
    return tovan::entry_value(entry);
}

int lvoption(const char *name) {
    const char *value = lvvar(name);
    if (value == nullptr) return 0;
    return strcmp(value, "0") != 0 && strcmp(value, "false") != 0;
}

void lvwalk(int mask, lvwalk_rtn callback) {
    const variable_heap *walked = tovan::loaded_variables("lvwalk");
    tovan::for_each_entry(walked, [=](int bucket, const heap_entry *entry) {
        int flags = tovan::entry_flags(entry);
        if (mask != 0 && (mask & flags) == 0) return;
        callback(bucket, flags, tovan::entry_name(entry),
                 tovan::entry_value(entry));
    });
}

uint32_t lvgenseek(void) {
    return heap.generation_seek;
}

uint32_t lvgen_lc(void) {
    return heap.generation_lines;
}

TOVAN_IDENT(lvvar, "8.4", "26/11/21")
