// heap_file.cc: a heap in a file of its own.
#include "shared/heap_file.h"

#include "shared/new_file.h"

#include <tovan/errexit.h>

void tools::replace_heap(const char *file, const heap_contents *contents,
                         mode_t permissions) {
    int descriptor = begin_file(file);
    errcheck(write_heap(descriptor, contents), file);
    finish_file(file, descriptor, permissions);
}
