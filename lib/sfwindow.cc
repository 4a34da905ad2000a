// sfwindow.cc: lines of a file, where they were read to.
#include "private_sfwindow.h"

#include "chkalloc.h"
#include "errexit.h"
#include "ident.h"
#include "private_io.h"

#include <limits.h>
#include <string.h>

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
    window->at_sign = nullptr;
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

char *find_in(char *start, const char *end, char character) {
    if (start == end) return nullptr;
    auto length = static_cast<size_t>(end - start);
    return static_cast<char *>(memchr(start, character, length));
}

// The next newline when there is none in the block; null when the file ends
// before one.
[[gnu::noinline]] char *read_newline(sf_window *window) {
    while (!window->has_ended) {
        auto searched = window->end - window->next;
        read_on(window);
        char *found = find_in(window->next + searched, window->end, '\n');
        if (found != nullptr) return found;
    }
    return nullptr;
}

char *without_last(char *start, char *end, char character) {
    return start < end && end[-1] == character ? end - 1 : end;
}

// Takes a line out of the window that ends at a newline, or where the file
// ends: there a control-Z does not count.
//   result    the line's end; null when there is no line
char *take_line(sf_window *window, char *newline) {
    if (newline != nullptr) {
        window->next = newline + 1;
        return newline;
    }
    char *start = window->next;
    window->next = window->end;
    char *end = without_last(start, window->end, control_z);
    return start < end ? end : nullptr;
}

// The first "@" of a line; null when there is none. Most lines have none: the
// search goes on behind their ends, and what it finds serves them all.
const char *find_at_sign(sf_window *window, char *start, const char *end) {
    char *sign = window->at_sign;
    if (sign < start) {
        sign = find_in(start, window->end, '@');
        if (sign == nullptr) sign = window->end;
        window->at_sign = sign;
    }
    return sign < end ? sign : nullptr;
}

}  // namespace

void tovan::open_window(sf_window *window, int descriptor) {
    window->descriptor = descriptor;
    window->has_ended = false;
    window->has_failed = false;
    window->next = window->block;
    window->end = window->block;
    window->at_sign = nullptr;
}

bool tovan::next_line(sf_window *window, sf_text *line) {
    char *newline = find_in(window->next, window->end, '\n');
    if (newline == nullptr) newline = read_newline(window);
    char *start = window->next;
    char *end = take_line(window, newline);
    if (end == nullptr) return false;
    if (end - start >= INT_MAX) nocore();
    end = without_last(start, end, '\r');
    *line = {start, end, find_at_sign(window, start, end)};
    *end = '\0';
    return true;
}

TOVAN_IDENT(sfwindow, "8.4", "26/11/21")
