// lvfntext.cc: expansion functions that work on their argument alone.
#include "lvexpand.h"

#include "dystr.h"
#include "evalarit.h"
#include "fmatch.h"
#include "ident.h"
#include "istype.h"
#include "private_istype.h"
#include "private_lvexpand.h"
#include "strutil.h"

#include <string.h>

namespace {

// An option word of splitpath, followed by white space or the end.
bool is_option(const char *argument, char letter) {
    return argument[0] == '-' && argument[1] == letter &&
           tovan::in_class(argument[2], tovan::class_word_end);
}

bool skips_after(char separator, char c) {
    return c == separator || tovan::in_class(c, tovan::class_line_space);
}

}  // namespace

void lvfn_empty(char *argument, dy *output) {
    tovan::add_truth(output, *argument == '\0');
}

void lvfn_expr(char *argument, dy *output) {
    int value = 0;
    if (evalarith(argument, &value, nullptr) != nullptr) {
        lverror("Syntax or interpretation error in `%s'", argument);
    }
    dyfmt(output, "@d", value);
}

void lvfn_home(char *, dy *) {
    lverror("@(home ...) not supported in this program");
}

void lvfn_insert(char *argument, dy *output) {
    char delimiter = *argument;
    if (delimiter == '\0') lverror("missing argument for @(insert ...)");
    char *prefix = argument + 1;
    char *close = strchr(prefix, delimiter);
    if (close == nullptr) {
        lverror("missing terminator for @(insert %c...)", delimiter);
    }
    *close = '\0';
    char *mark = strchr(prefix, '%');
    if (mark == nullptr) {
        lverror("@(insert ...) argument does not contain `%%'");
    }
    char **words = tovan::words_of(close + 1);
    for (char **word = words; *word != nullptr; word++) {
        tovan::add_separator(output, word == words);
        dyspan(output, prefix, mark);
        dystr(output, *word);
        dyspan(output, mark + 1, close);
    }
}

void lvfn_match(char *argument, dy *output) {
    tovan::add_truth(output, patmatch(tovan::words_of(argument)) != 0);
}

void lvfn_notempty(char *argument, dy *output) {
    tovan::add_truth(output, *argument != '\0');
}

void lvfn_splitpath(char *argument, dy *output) {
    char separator = is_option(argument, 's') ? ';' : ':';
    if (is_option(argument, 'c') || is_option(argument, 's')) {
        argument = overwhite(argument + 2);
    }
    int start = output->length;
    while (*argument != '\0') {
        char *end = strchrnul(argument, separator);
        dyspan(output, argument, end);
        // Chosen: so a separator at the end leaves its blank, which the end
        // of the whole text removes and any text behind the call keeps.
        if (*end != '\0' && output->length > start) dyaddc(output, ' ');
        while (skips_after(separator, *end))
            end++;
        argument = end;
    }
}

void lvfn_take1st(char *argument, dy *output) {
    dystr(output, tovan::words_of(argument)[0]);
}

TOVAN_IDENT(lvfntext, "8.4", "26/11/21")
