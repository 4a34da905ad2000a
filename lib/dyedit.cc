// dyedit.cc: trimming, cutting, inserting and joining paths.
#include "dystr.h"

#include "ident.h"
#include "private_istype.h"
#include "private_room.h"

#include <stdint.h>
#include <string.h>

namespace {

int length_of(const char *text, int n) {
    if (n >= 0) return n;
    auto length = static_cast<int64_t>(strlen(text));
    return tovan::limited_capacity(length, length);
}

char *set_length(dy *string, int length) {
    string->length = length;
    string->buffer[length] = '\0';
    return string->buffer;
}

// Without its trailing slashes; "." is no component.
int component_length(const char *component, int n) {
    n = length_of(component, n);
    while (n > 0 && component[n - 1] == '/')
        n--;
    return n == 1 && component[0] == '.' ? 0 : n;
}

// Deliberate: the first character is asked for in an empty component too: its
// terminator calls for a slash, a slash that was dropped from it does not
// (test dydiradd_dot_adds_only_the_slash).
bool is_slash_missing(const dy *string, const char *component) {
    return string->length > 0 && component[0] != '/' &&
           string->buffer[string->length - 1] != '/';
}

// Opens a gap of n bytes at `position`, which lies before the end. Chosen:
// grown also when the text will fill the buffer exactly, since the terminator
// moves as well.
//   result    where `bytes`, possibly a part of the string, were moved to by
//             growth, but not by the gap
const char *open_gap(dy *string, int position, const char *bytes, int n) {
    if (int64_t{string->length} + n >= string->capacity)
        bytes = tovan::grow_string_for(string, bytes, static_cast<size_t>(n));
    char *gap = string->buffer + position;
    memmove(gap + n, gap, static_cast<size_t>(string->length - position) + 1);
    string->length += n;
    return bytes;
}

// How many of the n bytes lie in front of the gap, when they are a part of
// the string; those behind it have moved up by n.
int bytes_before(const dy *string, const char *gap, const char *bytes, int n) {
    const char *end = string->buffer + string->length;
    if (bytes < string->buffer || bytes >= end || bytes + n <= gap) return n;
    return bytes < gap ? static_cast<int>(gap - bytes) : 0;
}

}  // namespace

char *dytrim(dy *string) {
    int length = string->length;
    while (length > 0 &&
           tovan::in_class(string->buffer[length - 1], tovan::class_line_space))
        length--;
    return set_length(string, length);
}

char *dydiradd(dy *string, const char *component, int n) {
    n = component_length(component, n);
    bool leads = is_slash_missing(string, component);
    size_t count = static_cast<size_t>(n);
    size_t added = count + leads + (n > 0);
    if (static_cast<size_t>(string->length) + added >=
        static_cast<size_t>(string->capacity))
        component = tovan::grow_string_for(string, component, added);
    char *end = string->buffer + string->length;
    if (leads) *end++ = '/';
    memcpy(end, component, count);
    end += count;
    if (n > 0) *end++ = '/';
    return set_length(string, static_cast<int>(end - string->buffer));
}

char *dyinsert(dy *string, int position, const char *bytes, int n) {
    n = length_of(bytes, n);
    if (n == 0) return string->buffer;
    if (position >= string->length) return dynstr(string, bytes, n);
    if (position < 0) position = 0;
    bytes = open_gap(string, position, bytes, n);
    char *gap = string->buffer + position;
    auto before = static_cast<size_t>(bytes_before(string, gap, bytes, n));
    memcpy(gap, bytes, before);
    memcpy(gap + before, bytes + before + n, static_cast<size_t>(n) - before);
    return string->buffer;
}

char *dycut(dy *string, char *from, char *to) {
    char *end = string->buffer + string->length;
    if (from < string->buffer || to > end || from >= to) return nullptr;
    memmove(from, to, static_cast<size_t>(end - to) + 1);
    string->length -= static_cast<int>(to - from);
    return string->buffer;
}

char *dytruncate(dy *string, int n) {
    int length = string->length;
    if (n < 0) n = n > -length ? length + n : 0;
    return set_length(string, n < length ? n : length);
}

TOVAN_IDENT(dyedit, "8.4", "26/11/21")
