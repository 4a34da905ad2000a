// table_file.h: inputs as tables of file-name patterns: files in memory, and
// which of them are of use.
#ifndef TOVAN_FUZZ_TABLE_FILE_H
#define TOVAN_FUZZ_TABLE_FILE_H

#include "memory_file.h"

#include <ctype.h>
#include <stddef.h>
#include <stdint.h>

namespace fuzz {

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
