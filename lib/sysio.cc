// sysio.cc: system calls that outlive signals and short counts.
#include "private_io.h"

#include "ident.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

int tovan::open_file(const char *path, int flags, int mode) {
    return open_for_caller(path, flags | O_CLOEXEC, mode);
}

int tovan::open_for_caller(const char *path, int flags, int mode) {
    int descriptor;
    do {
        descriptor = open(path, flags, mode);
    } while (descriptor == -1 && errno == EINTR);
    return descriptor;
}

ssize_t tovan::read_some(int descriptor, void *buffer, size_t count) {
    ssize_t got;
    do {
        got = read(descriptor, buffer, count);
    } while (got == -1 && errno == EINTR);
    return got;
}

ssize_t tovan::read_full(int descriptor, void *buffer, size_t count) {
    char *next = static_cast<char *>(buffer);
    size_t left = count;
    while (left > 0) {
        ssize_t got = read_some(descriptor, next, left);
        if (got == -1) return -1;
        if (got == 0) break;
        next += got;
        left -= static_cast<size_t>(got);
    }
    return static_cast<ssize_t>(count - left);
}

int tovan::write_full(int descriptor, const void *bytes, size_t count) {
    const char *next = static_cast<const char *>(bytes);
    while (count > 0) {
        ssize_t put = write(descriptor, next, count);
        if (put == -1 && errno == EINTR) continue;
        if (put == 0) errno = ENOSPC;  // no error, and no progress either
        if (put <= 0) return -1;
        next += put;
        count -= static_cast<size_t>(put);
    }
    return 0;
}

ssize_t tovan::read_at(int descriptor, void *buffer, size_t count,
                       off_t offset) {
    char *next = static_cast<char *>(buffer);
    size_t left = count;
    int before = errno;
    while (left > 0) {
        ssize_t got = pread(descriptor, next, left, offset);
        if (got == -1 && errno == EINTR) {
            errno = before;
            continue;
        }
        if (got == -1) return -1;
        if (got == 0) break;
        next += got;
        offset += got;
        left -= static_cast<size_t>(got);
    }
    return static_cast<ssize_t>(count - left);
}

int tovan::write_at(int descriptor, const void *bytes, size_t count,
                    off_t offset) {
    const char *next = static_cast<const char *>(bytes);
    while (count > 0) {
        ssize_t put = pwrite(descriptor, next, count, offset);
        if (put == -1 && errno == EINTR) continue;
        if (put == 0) errno = ENOSPC;  // no error, and no progress either
        if (put <= 0) return -1;
        next += put;
        offset += put;
        count -= static_cast<size_t>(put);
    }
    return 0;
}

TOVAN_IDENT(sysio, "8.4", "26/11/21")
