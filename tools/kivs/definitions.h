// definitions.h: definitions of variables, as they are read
// (docs/formats/kivs-vars.md).
#ifndef TOVAN_TOOLS_KIVS_DEFINITIONS_H
#define TOVAN_TOOLS_KIVS_DEFINITIONS_H

#include "shared/heap_writer.h"

#include <tovan/dypadd.h>

namespace kivs {

// Zeroed: nothing is defined.
struct definitions {
    dyd variables;   // of tools::heap_variable, in order; texts for ever
    uint32_t bytes;  // of the files read
    uint32_t lines;
};

// Adds a definition; name and value are copied.
void define(definitions *all, const char *name, const char *value,
            unsigned char flags);

// Adds the definitions of a file. Anything wrong in it ends the program with
// the file, the line and the reason.
void read_definitions(definitions *all, const char *file);

// Leaves the last definition of each name.
void drop_replaced(definitions *all);

// What is defined, for the writer.
tools::heap_contents contents_of(const definitions *all);

}  // namespace kivs

#endif
