// private_sfwindow.h (private): lines of a file, where they were read to.
// Builds on: nothing.
//
// A line reader that copies each line into a string costs as much as all else
// that happens to a line without references. This one reads blocks and hands
// out places in them.
#ifndef TOVAN_PRIVATE_SFWINDOW_H
#define TOVAN_PRIVATE_SFWINDOW_H

#include <stddef.h>

namespace [[gnu::visibility("hidden")]] tovan {

// A line without its newline; *end is NUL and may be overwritten.
struct sf_text {
    char *start;
    char *end;
    const char *at_sign;  // the first one; null when there is none
};

// A block of a file. What has not been handed out lies from `next` to `end`.
struct sf_window {
    int descriptor;
    bool has_ended;   // nothing more can be read
    bool has_failed;  // that is because of an error, with errno
    char *block;
    size_t size;  // one byte less than the block has
    char *next;
    char *end;
    char *at_sign;  // the first one from `next` on, or `end`; below `next`
                    // when it was not looked for yet
};

// Turns to the start of another file; the block is kept for its room.
void open_window(sf_window *window, int descriptor);

// The next line, cleaned as getdyline() (getdylin.h) does it.
//   result    false: there is none
bool next_line(sf_window *window, sf_text *line);

}  // namespace tovan

#endif
