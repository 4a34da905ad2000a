// traitwlk.cc: all traits, one after another.
#include "trait.h"

#include "ident.h"
#include "private_lvheap.h"
#include "private_trait.h"

#include <stdlib.h>

int traitwalk(int mask, lvwalk_rtn callback) {
    const tovan::variable_heap *table = tovan::traits_table();
    int result = 0;
    if (table == nullptr) return result;
    auto visit = [&](int bucket, const tovan::heap_entry *entry) {
        int flags = tovan::entry_flags(entry);
        if (mask != 0 && (mask & flags) == 0) return;
        const char *name = tovan::entry_name(entry);
        const char *value = getenv(name);
        if (value == nullptr) value = tovan::entry_value(entry);
        result = callback(bucket, flags, name, value);
    };
    tovan::for_each_entry(table, visit);
    return result;
}

TOVAN_IDENT(traitwlk, "8.4", "26/11/21")
