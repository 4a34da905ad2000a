// private_arlist.h (private): the headers of an archive, one after another
// (docs/formats/ar.md).
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_ARLIST_H
#define TOVAN_PRIVATE_ARLIST_H

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

namespace [[gnu::visibility("hidden")]] tovan {

// The archive that is being read; there is one at a time. Headers are looked at
// in a window, a stretch of the file that moves on as they do.
struct archive {
    const char *path;
    int descriptor;
    bool can_seek;
    off_t size;      // of the file, when that was asked last
    off_t position;  // of the next header
    off_t start;     // of the window in the file
    size_t held;     // bytes in the window
    size_t stretch;  // bytes to read at a time
};

constexpr size_t ar_name_width = 16;

// What a header says. The name is without its padding and without one "/" at
// its end.
struct ar_entry {
    char name[ar_name_width + 1];
    int length;  // of the name
    int32_t mtime;
    int32_t offset;
    int32_t size;
};

// Opens an archive and checks its magic; what is wrong ends the process. The
// descriptor stays open.
void open_archive(archive *a, const char *path);

// Reads the next header, whatever it is of; what is wrong with it ends the
// process.
//   result    false at the end
bool next_entry(archive *a, ar_entry *entry);

}  // namespace tovan

#endif
