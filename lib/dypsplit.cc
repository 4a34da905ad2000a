// dypsplit.cc: the words of a string.
#include "dypadd.h"

#include "chkalloc.h"
#include "ident.h"
#include "strutil.h"

// Deliberate: blanks, tabs and newlines only; other white space belongs to the
// words (test dypsplit_keeps_other_white_space_in_words).
void **dypsplit(dyp *array, char *text, int flags) {
    constexpr int split_a_copy = 1;
    if (text == nullptr) return array->array;
    char *word = overwhite(text);
    if (*word == '\0') return array->array;
    if (flags & split_a_copy) word = savestr(word);
    while (*word != '\0') {
        char *end = nextwhite(word);
        if (*end != '\0') *end++ = '\0';
        dypadd(array, word);
        word = overwhite(end);
    }
    return array->array;
}

TOVAN_IDENT(dypsplit, "8.4", "26/11/21")
