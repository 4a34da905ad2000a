// dystr.cc: making strings and appending to them.
//
// Appends are the hot path of everything that builds text: each loads and
// stores the length once (stores of characters may alias it), and growth
// stands out of line.
#include "dystr.h"

#include "chkalloc.h"
#include "ident.h"
#include "private_copy.h"
#include "private_room.h"

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

namespace {

constexpr int default_size = 16;
constexpr int string_marker = 1;  // arrays have 0 in the same place

char *start_empty(dy *string, int size) {
    string->capacity = size;
    string->buffer = static_cast<char *>(chkalloc(static_cast<size_t>(size)));
    return string->buffer;
}

bool has_room(const dy *string, size_t n) {
    return static_cast<size_t>(string->length) + n <
           static_cast<size_t>(string->capacity);
}

char *terminate(dy *string, size_t length) {
    string->length = static_cast<int>(length);
    string->buffer[length] = '\0';
    return string->buffer;
}

[[gnu::noinline]] char *append_any(dy *string, const char *bytes, size_t n) {
    if (!has_room(string, n)) bytes = tovan::grow_string_for(string, bytes, n);
    auto length = static_cast<size_t>(string->length);
    memcpy(string->buffer + length, bytes, n);
    return terminate(string, length + n);
}

// Calls nothing but as its last step, so that no register has to be saved.
[[gnu::always_inline]] inline char *append(dy *string, const char *bytes,
                                           size_t n) {
    if (n > tovan::short_run || !has_room(string, n))
        return append_any(string, bytes, n);
    auto length = static_cast<size_t>(string->length);
    char *buffer = string->buffer;
    tovan::copy_short(buffer + length, bytes, n);
    string->length = static_cast<int>(length + n);
    buffer[length + n] = '\0';
    return buffer;
}

// Nothing appended, nothing grown: a NUL needs the terminator's place only.
[[gnu::noinline]] void grow_for_character(dy *string, char character) {
    if (character == '\0' && string->length < string->capacity) return;
    tovan::grow_string(string, tovan::string_step, int64_t{string->length} + 2);
}

[[gnu::always_inline]] inline char *append_character(dy *string,
                                                     char character) {
    int length = string->length;
    if (length + 1 >= string->capacity) [[unlikely]]
        grow_for_character(string, character);
    char *buffer = string->buffer;
    buffer[length] = character;
    length += character != '\0';
    string->length = length;
    buffer[length] = '\0';
    return buffer;
}

}  // namespace

dy *dynew(dy *string, int size) {
    string->length = 0;
    string->marker = string_marker;
    string->next = nullptr;
    *start_empty(string, size > 0 ? size : default_size) = '\0';
    return string;
}

// Chosen: a record without a buffer that asks for none gets one all the same,
// of the size that dynew() would give, since there has to be a terminator.
dy *dyreuse(dy *string, int size) {
    if (string->capacity == 0) return dynew(string, size);
    string->length = 0;
    string->marker = string_marker;
    if (string->capacity < size) {
        free(string->buffer);
        start_empty(string, size);
    }
    string->buffer[0] = '\0';
    return string;
}

char *dygrow(dy *string, int extra) {
    tovan::grow_string(string, extra, int64_t{string->capacity} + extra);
    return string->buffer;
}

char *dystr(dy *string, const char *text) {
    if (text == nullptr) text = "";
    return append(string, text, strlen(text));
}

char *dynstr(dy *string, const char *bytes, int n) {
    return append(string, bytes, n > 0 ? static_cast<size_t>(n) : 0);
}

char *dyspan(dy *string, const char *start, const char *end) {
    return append(string, start,
                  end > start ? static_cast<size_t>(end - start) : 0);
}

int dyaddc(dy *string, int character) {
    append_character(string, static_cast<char>(character));
    return character;
}

char *dyaddslash(dy *string) {
    int length = string->length;
    if (length == 0 || string->buffer[length - 1] == '/') return string->buffer;
    return append_character(string, '/');
}

char *dyaddspace(dy *string) {
    int length = string->length;
    if (length == 0) return string->buffer;
    char last = string->buffer[length - 1];
    if (last == ' ' || last == '\t') return string->buffer;
    return append_character(string, ' ');
}

// Deliberate: the step is that for `column` characters, not for the number of
// characters added (test dypadc_grows_by_the_column).
char *dypadc(dy *string, int character, int column) {
    int64_t end = column;
    int length = string->length;
    if (column <= length) {
        if (length + 1 >= string->capacity)
            tovan::grow_string(string, tovan::string_step, int64_t{length} + 1);
    } else if (end + 1 >= string->capacity) {
        tovan::grow_string(string, tovan::step_for(end), end + 1);
    }
    char *buffer = string->buffer;
    if (column > length && static_cast<char>(character) != '\0') {
        memset(buffer + length, character,
               static_cast<size_t>(column - length));
        length = column;
    }
    return terminate(string, static_cast<size_t>(length));
}

TOVAN_IDENT(dystr, "8.4", "26/11/21")
