// clean.cc: a string reduced to its words.
#include "strutil.h"

#include "ident.h"
#include "istype.h"
#include "private_istype.h"

namespace {

constexpr int word_classes = tovan::class_letter | tovan::class_digit;

char folded(char character) {
    if (!tovan::in_class(character, tovan::class_upper)) return character;
    return static_cast<char>(character - 'A' + 'a');
}

}  // namespace

char *clean(char *text, int fold) {
    char *to = text;
    bool in_word = false;
    for (const char *from = text; *from != '\0'; from++) {
        bool is_word = tovan::in_class(*from, word_classes);
        if (is_word && !in_word && to != text) *to++ = ' ';
        if (is_word) *to++ = fold != 0 ? folded(*from) : *from;
        in_word = is_word;
    }
    *to = '\0';
    return text;
}

TOVAN_IDENT(clean, "8.4", "26/11/21")
