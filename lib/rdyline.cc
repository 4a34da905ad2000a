// rdyline.cc: lines of a descriptor.
#include "getdylin.h"

#include "chkalloc.h"
#include "ident.h"
#include "private_io.h"

#include <string.h>

namespace {

constexpr int new_line_size = 120;
constexpr int skip_leading = 1;
constexpr int trim_trailing = 2;
constexpr int append_to_string = 4;

bool is_blank(char character) {
    return character == ' ' || character == '\t';
}

// False at the end of the input.
bool has_unread(rdy *reader) {
    return reader->position < reader->fill || rdyfilbuf(reader) > 0;
}

void skip_blanks(rdy *reader) {
    while (has_unread(reader) && is_blank(reader->buffer[reader->position]))
        reader->position++;
}

// Appends the bytes up to the next newline; false when the input ends first.
bool append_line(rdy *reader, dy *line) {
    while (has_unread(reader)) {
        const char *start = reader->buffer + reader->position;
        const char *end = reader->buffer + reader->fill;
        const void *newline =
            memchr(start, '\n', static_cast<size_t>(end - start));
        if (newline != nullptr) end = static_cast<const char *>(newline);
        dyspan(line, start, end);
        reader->position = static_cast<int>(end - reader->buffer);
        if (newline == nullptr) continue;
        reader->position++;
        return true;
    }
    return false;
}

char *clean_end(dy *line, int flags) {
    char *buffer = line->buffer;
    int length = line->length;
    if (length > 0 && buffer[length - 1] == '\r') length--;
    if (flags & trim_trailing) {
        while (length > 0 && is_blank(buffer[length - 1]))
            length--;
    }
    line->length = length;
    buffer[length] = '\0';
    return buffer;
}

}  // namespace

rdy *rdy_init(int descriptor) {
    rdy *reader = static_cast<rdy *>(chkalloc(sizeof(rdy)));
    reader->descriptor = descriptor;
    reader->position = 0;
    reader->fill = 0;
    reader->at_end = 0;
    return reader;
}

int rdyfilbuf(rdy *reader) {
    reader->position = 0;
    reader->fill = 0;
    if (reader->at_end) return 0;
    ssize_t got = tovan::read_some(reader->descriptor, reader->buffer,
                                   sizeof reader->buffer);
    if (got > 0) {
        reader->fill = static_cast<int>(got);
    } else {
        reader->at_end = 1;
    }
    return reader->fill;
}

char *rdy_getline(rdy *reader, dy *line, int flags) {
    if (line->capacity == 0) {
        dynew(line, new_line_size);
    } else if (!(flags & append_to_string)) {
        dyreuse(line, 0);
    }
    int before = line->length;
    if (flags & skip_leading) skip_blanks(reader);
    if (append_line(reader, line)) return clean_end(line, flags);
    // Deliberate: an unfinished last line is not cleaned up (test
    // rdy_getline_leaves_the_end_of_an_unfinished_line).
    return line->length > before ? line->buffer : nullptr;
}

TOVAN_IDENT(rdyline, "8.4", "26/11/21")
