// system_calls.cc: standing between the library and the system.
#include "support/system_calls.h"

#include <errno.h>
#include <stdarg.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <algorithm>

// The linker sends calls of NAME to __wrap_NAME, and __real_NAME to NAME.
extern "C" {
int __real_open(const char *path, int flags, ...);
int __real_close(int descriptor);
ssize_t __real_read(int descriptor, void *buffer, size_t count);
ssize_t __real_write(int descriptor, const void *bytes, size_t count);
ssize_t __real_pread(int descriptor, void *buffer, size_t count, off_t offset);
ssize_t __real_pwrite(int descriptor, const void *bytes, size_t count,
                      off_t offset);
off_t __real_lseek(int descriptor, off_t offset, int whence);
int __real_fstat(int descriptor, struct stat *status);
void *__real_mmap(void *at, size_t size, int access, int flags, int descriptor,
                  off_t offset);
void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *block, size_t size);

int __wrap_open(const char *path, int flags, ...);
int __wrap_close(int descriptor);
ssize_t __wrap_read(int descriptor, void *buffer, size_t count);
ssize_t __wrap_write(int descriptor, const void *bytes, size_t count);
ssize_t __wrap_pread(int descriptor, void *buffer, size_t count, off_t offset);
ssize_t __wrap_pwrite(int descriptor, const void *bytes, size_t count,
                      off_t offset);
off_t __wrap_lseek(int descriptor, off_t offset, int whence);
int __wrap_fstat(int descriptor, struct stat *status);
void *__wrap_mmap(void *at, size_t size, int access, int flags, int descriptor,
                  off_t offset);
void *__wrap_malloc(size_t size);
void *__wrap_calloc(size_t count, size_t size);
void *__wrap_realloc(void *block, size_t size);
}

namespace support {

std::function<int(const system_call &)> on_call;

}  // namespace support

namespace {

using support::call_kind;

bool is_asking = false;

int ask(const support::system_call &call) {
    if (is_asking || !support::on_call) return support::goes_through;
    is_asking = true;
    int before = errno;
    int answer = support::on_call(call);
    errno = before;
    is_asking = false;
    return answer;
}

// Whether a call that moves no bytes fails.
bool fails(call_kind kind, int descriptor, size_t count, off_t offset) {
    int answer = ask({kind, descriptor, nullptr, count, offset});
    if (answer <= 0) return false;
    errno = answer;
    return true;
}

// How many bytes are moved; -1: the call fails.
ssize_t share(const support::system_call &call) {
    int answer = ask(call);
    if (answer > 0) {
        errno = answer;
        return -1;
    }
    auto count = static_cast<ssize_t>(call.count);
    if (answer == support::goes_through) return count;
    if (answer == support::half_of_it) return (count + 1) / 2;
    return std::min<ssize_t>(count, -2 - answer);
}

}  // namespace

int __wrap_open(const char *path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    int mode = va_arg(rest, int);
    va_end(rest);
    if (fails(call_kind::open, -1, 0, 0)) return -1;
    return __real_open(path, flags, mode);
}

// A descriptor is gone also when closing it fails.
int __wrap_close(int descriptor) {
    bool failed = fails(call_kind::close, descriptor, 0, 0);
    int reason = errno;
    int result = __real_close(descriptor);
    if (failed) errno = reason;
    return failed ? -1 : result;
}

ssize_t __wrap_read(int descriptor, void *buffer, size_t count) {
    ssize_t n = share({call_kind::read, descriptor, nullptr, count, 0});
    return n <= 0 ? n : __real_read(descriptor, buffer, static_cast<size_t>(n));
}

ssize_t __wrap_write(int descriptor, const void *bytes, size_t count) {
    ssize_t n = share({call_kind::write, descriptor, bytes, count, 0});
    return n <= 0 ? n : __real_write(descriptor, bytes, static_cast<size_t>(n));
}

ssize_t __wrap_pread(int descriptor, void *buffer, size_t count, off_t offset) {
    ssize_t n = share({call_kind::pread, descriptor, nullptr, count, offset});
    if (n <= 0) return n;
    return __real_pread(descriptor, buffer, static_cast<size_t>(n), offset);
}

ssize_t __wrap_pwrite(int descriptor, const void *bytes, size_t count,
                      off_t offset) {
    ssize_t n = share({call_kind::pwrite, descriptor, bytes, count, offset});
    if (n <= 0) return n;
    return __real_pwrite(descriptor, bytes, static_cast<size_t>(n), offset);
}

off_t __wrap_lseek(int descriptor, off_t offset, int whence) {
    if (fails(call_kind::lseek, descriptor, 0, offset)) return -1;
    return __real_lseek(descriptor, offset, whence);
}

int __wrap_fstat(int descriptor, struct stat *status) {
    if (fails(call_kind::fstat, descriptor, 0, 0)) return -1;
    return __real_fstat(descriptor, status);
}

void *__wrap_mmap(void *at, size_t size, int access, int flags, int descriptor,
                  off_t offset) {
    if (fails(call_kind::mmap, descriptor, size, offset)) return MAP_FAILED;
    return __real_mmap(at, size, access, flags, descriptor, offset);
}

void *__wrap_malloc(size_t size) {
    if (fails(call_kind::malloc, -1, size, 0)) return nullptr;
    return __real_malloc(size);
}

void *__wrap_calloc(size_t count, size_t size) {
    if (fails(call_kind::malloc, -1, count * size, 0)) return nullptr;
    return __real_calloc(count, size);
}

void *__wrap_realloc(void *block, size_t size) {
    if (fails(call_kind::malloc, -1, size, 0)) return nullptr;
    return __real_realloc(block, size);
}
