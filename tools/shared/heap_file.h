// heap_file.h: a heap in a file of its own.
#ifndef TOVAN_TOOLS_HEAP_FILE_H
#define TOVAN_TOOLS_HEAP_FILE_H

#include "shared/heap_writer.h"

#include <sys/types.h>

namespace tools {

// Writes a heap beside the file's place and moves it there: readers see the
// old file or the new one, whole.
//   permissions  of the new file, whatever the umask is
//   fails     ends the tool: "FILE: ..."; the old file is as it was
//   edge      a device or a pipe is refused: moving a file there would take
//             it away
void replace_heap(const char *file, const heap_contents *contents,
                  mode_t permissions);

}  // namespace tools

#endif
