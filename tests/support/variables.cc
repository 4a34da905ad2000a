// variables.cc: the build tree's variables of a test.
#include "support/variables.h"

#include "support/tree.h"

#include <tovan/lvget.h>

namespace support {

void load_variables(const std::vector<variable> &variables) {
    load_heap(heap_of(variables));
}

void load_heap(const std::string &bytes) {
    write_file("variables.heap", bytes);
    lvget(0, nullptr, 1, "variables.heap", nullptr);
}

}  // namespace support
