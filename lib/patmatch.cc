// patmatch.cc: one text against a list of patterns, or the other way round.
#include "fmatch.h"

#include "ident.h"
#include "rxpcomp.h"

#include <string.h>

namespace {

enum mode { file_names, expressions, exact };

struct options {
    mode how;
    bool reversed;
};

// Reads one option; false for any other word.
// Chosen: a second "-reverse" does not undo the first.
bool read_option(const char *word, options *given) {
    if (strcmp(word, "-rxp") == 0) {
        given->how = expressions;
    } else if (strcmp(word, "-exact") == 0) {
        given->how = exact;
    } else if (strcmp(word, "-reverse") == 0) {
        given->reversed = true;
    } else {
        return false;
    }
    return true;
}

bool compiles(const char *pattern) {
    return rxpcomp(pattern, 0, 0) > 0;
}

// An expression is compiled already.
bool matches_one(mode how, const char *subject, const char *pattern) {
    switch (how) {
        case expressions:
            return rxpeval(subject) == 1;
        case exact:
            return strcmp(subject, pattern) == 0;
        default:
            return fmatch(subject, pattern) == 1;
    }
}

bool any_pattern(mode how, const char *subject, const char *const *patterns) {
    for (; *patterns != nullptr; ++patterns) {
        if (how == expressions && !compiles(*patterns)) continue;
        if (matches_one(how, subject, *patterns)) return true;
    }
    return false;
}

bool any_subject(mode how, const char *pattern, const char *const *subjects) {
    if (how == expressions && !compiles(pattern)) return false;
    for (; *subjects != nullptr; ++subjects) {
        if (matches_one(how, *subjects, pattern)) return true;
    }
    return false;
}

}  // namespace

int patmatch(const char *const *words) {
    options given = {file_names, false};
    while (*words != nullptr && read_option(*words, &given))
        ++words;
    const char *first = *words;
    if (first == nullptr) return 0;
    if (given.reversed) return any_subject(given.how, first, words + 1);
    return any_pattern(given.how, first, words + 1);
}

TOVAN_IDENT(patmatch, "8.4", "26/11/21")
