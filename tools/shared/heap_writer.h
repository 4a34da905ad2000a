// heap_writer.h: writes variable heaps (docs/formats/heap.md).
#ifndef TOVAN_TOOLS_HEAP_WRITER_H
#define TOVAN_TOOLS_HEAP_WRITER_H

#include <stddef.h>
#include <stdint.h>

namespace tools {

constexpr unsigned char exported = 0x02;  // flag: into the environment

struct heap_variable {
    const char *name;
    const char *value;
    unsigned char flags;
};

// What goes into one heap. Chains keep the order of the variables; a name
// that occurs twice is found with its first value.
struct heap_contents {
    const heap_variable *variables;
    size_t count;
    uint32_t generation_seek;
    uint32_t generation_lines;
};

// Why a variable cannot be written; null when it can.
const char *heap_refusal(const heap_variable *variable);

// Writes header and heap. Every variable must be one that heap_refusal()
// lets through.
//   result    0, or -1 with errno; EFBIG: more than 4 GB, nothing written
int write_heap(int descriptor, const heap_contents *contents);

}  // namespace tools

#endif
