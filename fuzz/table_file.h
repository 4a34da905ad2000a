// table_file.h: inputs as files that have a name, and which of them are of
// use for tables of file-name patterns.
#ifndef TOVAN_FUZZ_TABLE_FILE_H
#define TOVAN_FUZZ_TABLE_FILE_H

#include <ctype.h>
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>
#include <string>

namespace fuzz {

// Gives the one file of this process another content; its name.
inline const char *table_file(const uint8_t *bytes, size_t size) {
    static int descriptor = memfd_create("table", 0);
    static std::string name = "/proc/self/fd/" + std::to_string(descriptor);
    if (ftruncate(descriptor, 0) != 0) abort();
    if (pwrite(descriptor, bytes, size, 0) != static_cast<ssize_t>(size))
        abort();
    return name.c_str();
}

// Whether some word may nest braces more than five deep. Between stars such
// a pattern reports that for every try, millions of times: nothing is learnt
// about the table, and patterns have a target of their own.
inline bool nests_too_deep(const uint8_t *bytes, size_t size) {
    int braces = 0;
    for (size_t i = 0; i < size; ++i) {
        braces += bytes[i] == '{';
        if (isspace(bytes[i])) braces = 0;
        if (braces > 5) return true;
    }
    return false;
}

}  // namespace fuzz

#endif
