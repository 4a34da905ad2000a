// new_file.h: files that are written whole or not at all.
#ifndef TOVAN_TOOLS_NEW_FILE_H
#define TOVAN_TOOLS_NEW_FILE_H

#include <sys/types.h>

namespace tools {

// Makes a file beside the place of another, which it is to take: readers see
// the old file or the new one. What is unfinished is removed however the tool
// ends, also by SIGHUP, SIGINT or SIGTERM. One at a time.
//   result    a descriptor to write to
//   fails     ends the tool: "FILE: ..."
//   edge      a device or a pipe is refused: moving a file there would take
//             it away
int begin_file(const char *file);

// Closes the descriptor and moves the file to its place.
//   permissions  of the file, whatever the umask is
//   fails     ends the tool: "FILE: ..."; the old file is as it was
void finish_file(const char *file, int descriptor, mode_t permissions);

// Removes the file that was begun and not finished, if there is one. Called
// when the tool ends.
void remove_unfinished();

}  // namespace tools

#endif
