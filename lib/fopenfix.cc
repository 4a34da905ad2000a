// fopenfix.cc: streams that append.
#include "fastout.h"

#include "ident.h"
#include "private_io.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

namespace {

constexpr int permissions = 0666;

// The flags of an append mode, or 0 for another mode.
int append_flags(const char *mode) {
    constexpr int append = O_CREAT | O_APPEND;
    if (strcmp(mode, "a") == 0 || strcmp(mode, "ab") == 0)
        return O_WRONLY | append;
    if (strcmp(mode, "a+") == 0 || strcmp(mode, "a+b") == 0)
        return O_RDWR | append;
    return 0;
}

}  // namespace

FILE *fopenfix(const char *path, const char *mode) {
    int flags = append_flags(mode);
    if (flags == 0) return fopen(path, mode);
    int descriptor = tovan::open_for_caller(path, flags, permissions);
    if (descriptor == -1) return nullptr;
    if ((flags & O_ACCMODE) == O_WRONLY) lseek(descriptor, 0, SEEK_END);
    FILE *stream = fdopen(descriptor, mode);
    if (stream == nullptr) {
        int reason = errno;
        close(descriptor);
        errno = reason;
    }
    return stream;
}

TOVAN_IDENT(fopenfix, "8.4", "26/11/21")
