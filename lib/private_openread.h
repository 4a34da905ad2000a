// private_openread.h (private): text files of the installation as streams.
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_OPENREAD_H
#define TOVAN_PRIVATE_OPENREAD_H

#include <stdio.h>

namespace [[gnu::visibility("hidden")]] tovan {

// fopen(3) for reading, close-on-exec, repeated when a signal interrupts it;
// null with errno when the file cannot be opened.
FILE *open_for_reading(const char *path);

}  // namespace tovan

#endif
