// overwhite.cc: white space around words.
#include "strutil.h"

#include "ident.h"
#include "istype.h"
#include "private_istype.h"
#include "private_strutil.h"

#include <string.h>

char *tovan::trim(char *text) {
    size_t length = strlen(text);
    while (length > 0 && in_class(text[length - 1], class_space))
        length--;
    text[length] = '\0';
    return text;
}

char *overwhite(const char *text) {
    while (tovan::in_class(*text, tovan::class_line_space))
        text++;
    return const_cast<char *>(text);
}

char *nextwhite(const char *text) {
    while (!tovan::in_class(*text, tovan::class_word_end))
        text++;
    return const_cast<char *>(text);
}

TOVAN_IDENT(overwhite, "8.4", "26/11/21")
