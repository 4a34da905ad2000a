// private_io.h (private): system calls that outlive signals and short counts.
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_IO_H
#define TOVAN_PRIVATE_IO_H

#include <stddef.h>
#include <sys/types.h>

namespace [[gnu::visibility("hidden")]] tovan {

// open(2) with close-on-exec, repeated when a signal interrupts it.
int open_file(const char *path, int flags, int mode = 0);

// The same without close-on-exec: what goes to the caller is inherited as
// with open(2).
int open_for_caller(const char *path, int flags, int mode = 0);

// One read(2), repeated when a signal interrupts it.
ssize_t read_some(int descriptor, void *buffer, size_t count);

// Reads until `count` bytes are there or the input ends; -1 on an error.
ssize_t read_full(int descriptor, void *buffer, size_t count);

// Writes everything; 0, or -1 with errno.
int write_full(int descriptor, const void *bytes, size_t count);

// The same at an offset of a file; its position stays. Reading leaves errno as
// it was, also when a signal has come between.
ssize_t read_at(int descriptor, void *buffer, size_t count, off_t offset);
int write_at(int descriptor, const void *bytes, size_t count, off_t offset);

}  // namespace tovan

#endif
