// sfwindow.cc: lines of a file, where they were read to.
#include "private_sfwindow.h"

#include "chkalloc.h"
#include "errexit.h"
#include "ident.h"
#include "private_io.h"

#include <limits.h>
#include <string.h>

using tovan::sf_text;
using tovan::sf_window;

namespace {

constexpr size_t first_size = 65536;
constexpr char control_z = 26;

// Makes the block large enough to read on behind what it holds.
void make_room(sf_window *window) {
    auto kept = static_cast<size_t>(window->end - window->next);
    if (kept < window->size) {
        memmove(window->block, window->next, kept);
    } else {
        if (kept > INT_MAX) nocore();
        window->size = window->size == 0 ? first_size : window->size * 2;
        window->block =
            static_cast<char *>(chkrealloc(window->block, window->size + 1));
    }
    window->next = window->block;
    window->end = window->block + kept;
}

// Reads what is there behind the unfinished line.
void read_on(sf_window *window) {
    make_room(window);
    auto room = static_cast<size_t>(window->block + window->size - window->end);
    ssize_t count = tovan::read_some(window->descriptor, window->end, room);
    window->has_failed = count < 0;
    window->has_ended = count <= 0;
    if (count > 0) window->end += count;
}

// The next newline; null when the file ends before one.
char *find_newline(sf_window *window) {
    size_t searched = 0;
    while (true) {
        auto rest = static_cast<size_t>(window->end - window->next);
        if (searched < rest) {
            char *unsearched = window->next + searched;
            void *found = memchr(unsearched, '\n', rest - searched);
            if (found != nullptr) return static_cast<char *>(found);
        }
        if (window->has_ended) return nullptr;
        searched = rest;
        read_on(window);
    }
}

void drop_last(sf_text *line, char character) {
    if (line->start < line->end && line->end[-1] == character) --line->end;
}

// The last line, which has no newline.
//   result    false: there is nothing on it
bool take_rest(sf_window *window, sf_text *line) {
    *line = {window->next, window->end};
    window->next = window->end;
    drop_last(line, control_z);
    return line->start < line->end;
}

}  // namespace

void tovan::open_window(sf_window *window, int descriptor) {
    window->descriptor = descriptor;
    window->has_ended = false;
    window->has_failed = false;
    window->next = window->block;
    window->end = window->block;
}

bool tovan::next_line(sf_window *window, sf_text *line) {
    char *newline = find_newline(window);
    if (newline != nullptr) {
        *line = {window->next, newline};
        window->next = newline + 1;
    } else if (!take_rest(window, line)) {
        return false;
    }
    if (line->end - line->start >= INT_MAX) nocore();
    drop_last(line, '\r');
    *line->end = '\0';
    return true;
}

TOVAN_IDENT(sfwindow, "8.4", "26/11/21")
