// creation.h: files whose making fails. Replaces open(2) in the one source of
// a test program that includes it.
#ifndef TOVAN_TESTS_CREATION_H
#define TOVAN_TESTS_CREATION_H

#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stddef.h>
#include <vector>

namespace support {

// Errors of the next opens that make a file, 0 for a good one; those behind
// them are good.
inline std::vector<int> creation_errors;

// How many there were.
inline size_t creations = 0;

inline void fail_creations(const std::vector<int> &errors) {
    creation_errors = errors;
    creations = 0;
}

}  // namespace support

extern "C" int open(const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if ((flags & O_EXCL) != 0) {
        size_t number = support::creations++;
        bool is_listed = number < support::creation_errors.size();
        errno = is_listed ? support::creation_errors[number] : 0;
        if (errno != 0) return -1;
    }
    return openat(AT_FDCWD, path, flags, mode);
}

#endif
