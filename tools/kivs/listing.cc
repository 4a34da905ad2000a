// listing.cc: a heap as text.
#include "kivs/listing.h"

#include "shared/heap_writer.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/dypadd.h>
#include <tovan/lvget.h>

using tools::heap_variable;

namespace {

// The walked variables. Filled by list_heap(); not released.
constinit dyd variables{};

int take_variable(int, int flags, const char *name, const char *value) {
    heap_variable variable = {name, value, static_cast<unsigned char>(flags)};
    dydadd(&variables, &variable);
    return 0;
}

int compare_names(const void *a, const void *b) {
    return strcmp(static_cast<const heap_variable *>(a)->name,
                  static_cast<const heap_variable *>(b)->name);
}

}  // namespace

void kivs::list_heap(const char *file) {
    lvget(0, nullptr, 0, file, nullptr);
    dydnew(&variables, 64, sizeof(heap_variable));
    lvwalk(0, take_variable);
    auto *first = static_cast<heap_variable *>(variables.data);
    auto count = static_cast<size_t>(variables.count);
    qsort(first, count, sizeof *first, compare_names);
    for (const heap_variable *v = first; v < first + count; ++v) {
        printf("%s%s = %s\n",
               (v->flags & tools::exported) != 0 ? "export " : "", v->name,
               v->value);
    }
}
