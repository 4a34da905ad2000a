// getdywrd.cc: words of a stream.
#include "getdylin.h"

#include "ident.h"
#include "private_istype.h"

namespace {

constexpr int new_word_size = 56;
constexpr int skip_comments = 1;

bool is_space(int character) {
    return tovan::in_class(static_cast<char>(character), tovan::class_space);
}

int end_of_comment(FILE *stream) {
    int character;
    do {
        character = getc_unlocked(stream);
    } while (character != '\n' && character != EOF);
    return character;
}

// The first character of the next word, or EOF.
int first_of_word(FILE *stream, int flags) {
    for (;;) {
        int character = getc_unlocked(stream);
        if (character == '#' && (flags & skip_comments))
            character = end_of_comment(stream);
        if (character == EOF || !is_space(character)) return character;
    }
}

}  // namespace

char *getdyword(FILE *stream, dy *word, int flags) {
    if (feof(stream)) return nullptr;
    int character = first_of_word(stream, flags);
    if (character == EOF) return nullptr;
    dyreuse(word, word->capacity == 0 ? new_word_size : 0);
    do {
        char byte = static_cast<char>(character);
        dynstr(word, &byte, 1);  // keeps a NUL, which dyaddc() would not
        character = getc_unlocked(stream);
    } while (character != EOF && !is_space(character));
    return word->buffer;
}

TOVAN_IDENT(getdywrd, "8.4", "26/11/21")
