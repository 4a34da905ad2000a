// system_calls.h: standing between the library and the system, to count calls,
// to note them down, or to make them fail. For the test programs that
// tests/CMakeLists.txt links so.
#ifndef TOVAN_TESTS_SYSTEM_CALLS_H
#define TOVAN_TESTS_SYSTEM_CALLS_H

#include <stddef.h>
#include <sys/types.h>
#include <functional>

namespace support {

enum class call_kind {
    open,
    close,
    read,
    write,
    pread,
    pwrite,
    lseek,
    fstat,
    mmap,
    malloc,  // calloc and realloc too
};
constexpr int call_kinds = 10;

// A call that is about to be made.
struct system_call {
    call_kind kind;
    int descriptor;     // -1: none
    const void *bytes;  // those to be written
    size_t count;       // of bytes to be read, written or allocated
    off_t offset;
};

// What becomes of a call: it is made, or fails with the errno that is given,
// or is made for half of the bytes, or for so many of them.
constexpr int goes_through = 0;
constexpr int half_of_it = -1;
constexpr int cut_to(int bytes) {
    return -2 - bytes;
}

// Asked before every call; empty: all go through. Calls that the answer itself
// needs go through.
extern std::function<int(const system_call &)> on_call;

}  // namespace support

#endif
