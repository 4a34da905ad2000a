// memory_file.h: an input as a file that has a name.
#ifndef TOVAN_FUZZ_MEMORY_FILE_H
#define TOVAN_FUZZ_MEMORY_FILE_H

#include <stddef.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>
#include <string>

namespace fuzz {

// Gives the one file of this process another content; its name.
inline const char *memory_file(const void *bytes, size_t size) {
    static int descriptor = memfd_create("input", 0);
    static std::string name = "/proc/self/fd/" + std::to_string(descriptor);
    if (ftruncate(descriptor, 0) != 0) abort();
    if (pwrite(descriptor, bytes, size, 0) != static_cast<ssize_t>(size))
        abort();
    return name.c_str();
}

}  // namespace fuzz

#endif
