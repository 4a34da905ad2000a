// sfwords.cc: the forms in which a reference writes words.
#include "private_sfproc.h"

#include "ident.h"
#include "private_istype.h"

#include <string.h>

using tovan::sf_span;

namespace {

bool is_word_space(char character) {
    return tovan::in_class(character, tovan::class_line_space);
}

// Cuts the first word off; false when there is none.
bool take_word(sf_span *rest, sf_span *word) {
    const char *next = rest->start;
    while (next < rest->end && is_word_space(*next))
        ++next;
    word->start = next;
    while (next < rest->end && !is_word_space(*next))
        ++next;
    word->end = next;
    rest->start = next;
    return word->start < word->end;
}

// How a character is written inside double quotes; null: as it is.
const char *quoted_form(char character) {
    switch (character) {
        case '"':
            return "\\\"";
        case '\\':
            return "\\\\";
        case '\t':
            return "\\t";
        case '\n':
            return "\\n";
        default:
            return nullptr;
    }
}

}  // namespace

void tovan::write_split(dy *output, sf_span words, const char *separators,
                        sf_span between) {
    auto separates = [separators](char character) {
        return character == separators[0] || character == separators[1];
    };
    const char *next = words.start;
    while (next < words.end) {
        const char *word = next;
        while (next < words.end && !separates(*next))
            ++next;
        dyspan(output, word, next);
        if (next == words.end) return;
        dyspan(output, between.start, between.end);
        while (next < words.end && separates(*next))
            ++next;
    }
}

void tovan::write_each(dy *output, sf_span words, const char *before,
                       const char *after) {
    for (sf_span word; take_word(&words, &word);) {
        dystr(output, before);
        dyspan(output, word.start, word.end);
        dystr(output, after);
    }
}

void tovan::write_joined(dy *output, sf_span words, char between) {
    sf_span word;
    if (!take_word(&words, &word)) return;
    dyspan(output, word.start, word.end);
    while (take_word(&words, &word)) {
        dyaddc(output, between);
        dyspan(output, word.start, word.end);
    }
}

void tovan::write_quoted(dy *output, sf_span text) {
    const char *run = text.start;
    for (const char *next = run; next < text.end; ++next) {
        const char *form = quoted_form(*next);
        if (form == nullptr) continue;
        dyspan(output, run, next);
        dystr(output, form);
        run = next + 1;
    }
    dyspan(output, run, text.end);
}

TOVAN_IDENT(sfwords, "8.4", "26/11/21")
