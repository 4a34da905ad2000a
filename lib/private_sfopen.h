// private_sfopen.h (private): what the readers of files share.
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_SFOPEN_H
#define TOVAN_PRIVATE_SFOPEN_H

#include <limits.h>
#include <stdio.h>

namespace [[gnu::visibility("hidden")]] tovan {

// The number of the next line; the last number stands for all that follow.
constexpr int line_after(int line) {
    return line < INT_MAX ? line + 1 : line;
}

// Closes a file that has been read to its end, standard input excepted.
//   fails     reading had failed: "path: system text" ends the process
void close_input(FILE *stream, const char *path);

}  // namespace tovan

#endif
