// sfput.cc: the way of fixed text to the program's writer.
#include "sfixfile.h"

#include "errexit.h"
#include "ident.h"
#include "istype.h"

#include <string.h>

namespace {

constexpr char no_character = '\377';  // "~."

void refuse(const char *, int) {
    errexit("Logic error: setsfwrite() not been called");
}

using writer_function = void (*)(const char *text, int length);

// Set by setsfwrite() and settildecnv(), for the rest of the process.
constinit writer_function write_text = refuse;
constinit bool converts_tildes = false;

// The character of the mnemonic at a place; -1 when there is none.
int character_at(const char *mnemonic, const char *end) {
    if (end - mnemonic < 2) return -1;
    const char both[] = {mnemonic[0], mnemonic[1], '\0'};
    return strtofrog(both);
}

// Converts one tilde sequence; an unknown one loses nothing.
//   next      behind the "~"
//   result    where the text goes on
char *convert_sequence(char *next, const char *end, char *result) {
    if (next < end && (*next == '~' || *next == '.')) {
        *result = *next == '~' ? '~' : no_character;
        return next + 1;
    }
    int code = character_at(next, end);
    *result = code < 0 ? '~' : static_cast<char>(code);
    return code < 0 ? next : next + 2;
}

// Converts what follows the first tilde, in place.
//   result    the new end
char *convert_from(char *first, const char *end) {
    char *to = first;
    for (char *from = first; from < end; ++to) {
        if (*from == '~')
            from = convert_sequence(from + 1, end, to);
        else
            *to = *from++;
    }
    return to;
}

// Converts a text, in place.
//   result    the new length
[[gnu::noinline]] int convert_tildes(char *text, int length) {
    if (length < 2) return length;
    void *first = memchr(text, '~', static_cast<size_t>(length));
    if (first == nullptr) return length;
    char *end = convert_from(static_cast<char *>(first), text + length);
    return static_cast<int>(end - text);
}

}  // namespace

void sfput(char *text, int length, int convert) {
    if (convert != 0 && converts_tildes) length = convert_tildes(text, length);
    write_text(text, length);
}

void setsfwrite(void (*writer)(const char *text, int length)) {
    write_text = writer != nullptr ? writer : refuse;
}

int settildecnv(void) {
    converts_tildes = true;
    return 0;
}

TOVAN_IDENT(sfput, "8.4", "26/11/21")
