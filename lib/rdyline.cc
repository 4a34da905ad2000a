// rdyline.cc: lines of a descriptor.
#include "getdylin.h"

#include "chkalloc.h"
#include "ident.h"
#include "private_io.h"

#include <string.h>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

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

// Ends a string of `length` characters, after a newline.
inline char *clean_end(dy *line, int length, int flags) {
    char *buffer = line->buffer;
    if (length > 0 && buffer[length - 1] == '\r') length--;
    if (flags & trim_trailing) {
        while (length > 0 && is_blank(buffer[length - 1]))
            length--;
    }
    line->length = length;
    buffer[length] = '\0';
    return buffer;
}

#ifdef __SSE2__
// The lines of most files are short, lie in the buffer as a whole and fit into
// the string that held the one before. Such a line is copied while its newline
// is looked for, 32 bytes at a time: two calls for two passes would cost more
// than the line. The last step may copy bytes behind the newline.
//   result    the length of the line, which is taken; or -1: it is no such
//             line, and the buffer holds anything
inline int copy_short_line(rdy *reader, dy *line) {
    constexpr int half = sizeof(__m128i);
    constexpr int step = 2 * half;
    const __m128i newline = _mm_set1_epi8('\n');
    const char *from = reader->buffer + reader->position;
    char *to = line->buffer;
    int end = reader->fill - reader->position;
    if (end > line->capacity) end = line->capacity;
    for (int at = 0; at <= end - step; at += step) {
        __m128i low, high;
        memcpy(&low, from + at, half);
        memcpy(&high, from + at + half, half);
        memcpy(to + at, &low, half);
        memcpy(to + at + half, &high, half);
        low = _mm_cmpeq_epi8(low, newline);
        high = _mm_cmpeq_epi8(high, newline);
        if (_mm_movemask_epi8(_mm_or_si128(low, high)) == 0) continue;
        auto found = static_cast<unsigned>(_mm_movemask_epi8(low)) |
                     static_cast<unsigned>(_mm_movemask_epi8(high)) << half;
        int length = at + __builtin_ctz(found);
        reader->position += length + 1;
        return length;
    }
    return -1;
}
#else
inline int copy_short_line(rdy *, dy *) {
    return -1;
}
#endif

[[gnu::noinline]] char *get_any_line(rdy *reader, dy *line, int flags) {
    if (line->capacity == 0) {
        dynew(line, new_line_size);
    } else if (!(flags & append_to_string)) {
        dyreuse(line, 0);
    }
    int before = line->length;
    if (flags & skip_leading) skip_blanks(reader);
    if (append_line(reader, line)) return clean_end(line, line->length, flags);
    // Deliberate: an unfinished last line is not cleaned up (test
    // rdy_getline_leaves_the_end_of_an_unfinished_line).
    return line->length > before ? line->buffer : nullptr;
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
    if (!(flags & (skip_leading | append_to_string))) {
        int length = copy_short_line(reader, line);
        if (length >= 0) return clean_end(line, length, flags);
    }
    return get_any_line(reader, line, flags);
}

TOVAN_IDENT(rdyline, "8.4", "26/11/21")
