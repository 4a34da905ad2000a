// sfputdict.cc: the sorted listing of the dictionary.
#include "sfdict.h"

#include "chkalloc.h"
#include "ident.h"
#include "private_sfterm.h"

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

using tovan::sf_term;

namespace {

constexpr int tab_stop = 8;
constexpr int last_column = 78;
constexpr int continued_column = 2 * tab_stop;
constexpr int line_number_width = 8;  // ":000000:"

int by_name(const void *a, const void *b) {
    const sf_term *const *first = static_cast<const sf_term *const *>(a);
    const sf_term *const *second = static_cast<const sf_term *const *>(b);
    return strcmp(tovan::name_of(*first), tovan::name_of(*second));
}

void put(const char *text) {
    fputs_unlocked(text, stdout);
}

// Writes one character of a value.
//   result    the columns that count for it
int put_character(char character) {
    switch (character) {
        case '\n':
            put("\\n");
            return 2;
        case '\\':
            put("\\\\");
            return 2;
        case '#':
            put("\\#");
            return 2;
        case '@':
            // Deliberate: two characters, one column (test
            // doubled_at_sign_counts_one_column).
            put("@@");
            return 1;
        default:
            putc_unlocked(character, stdout);
            return 1;
    }
}

// Writes a value, folded where a word would pass the last column.
void put_value(const char *next, int64_t column) {
    while (*next != '\0') {
        column += put_character(*next);
        if (*next++ != ' ') continue;
        auto word = static_cast<int64_t>(strchrnul(next, ' ') - next);
        if (column + word <= last_column) continue;
        put("\\\n\t\t");
        column = continued_column;
    }
}

int64_t rounded_to_tab(int64_t column) {
    return (column + tab_stop - 1) / tab_stop * tab_stop;
}

void put_term(const sf_term *term, bool with_places) {
    auto column = static_cast<int64_t>(term->name_length) + 1;
    if (with_places) {
        printf("%s:%06d:", term->where, term->line);
        column += static_cast<int64_t>(strlen(term->where)) + line_number_width;
    }
    column = rounded_to_tab(column);
    put(tovan::name_of(term));
    put("\t");
    if (!with_places && term->name_length < tab_stop) {
        put("\t");
        column += tab_stop;
    }
    if (term->value.length == 0)
        put("# NONE");
    else
        put_value(term->value.buffer, column);
    put("\n");
}

}  // namespace

void sf_putdict(int uflag) {
    tovan::sf_terms all = tovan::all_terms();
    auto **sorted = static_cast<const sf_term **>(
        chkalloc((all.count + 1) * sizeof(const sf_term *)));
    for (size_t i = 0; i < all.count; ++i)
        sorted[i] = all.start + i;
    qsort(sorted, all.count, sizeof *sorted, by_name);
    for (size_t i = 0; i < all.count; ++i)
        put_term(sorted[i], uflag != 0);
    free(sorted);
}

TOVAN_IDENT(sfputdict, "8.4", "26/11/21")
