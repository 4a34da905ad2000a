// variables.h: the build tree's variables of a test.
#ifndef TOVAN_TESTS_VARIABLES_H
#define TOVAN_TESTS_VARIABLES_H

#include "support/heap_image.h"

namespace support {

// Loads a heap that holds these variables, in place of an earlier one.
void load_variables(const std::vector<variable> &variables);

// Loads the bytes of a heap file.
void load_heap(const std::string &bytes);

}  // namespace support

#endif
