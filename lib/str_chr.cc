// str_chr.cc: a character in a string that may be absent.
#include "strutil.h"

#include "ident.h"

#include <string.h>

char *str_chr(const char *text, int character) {
    if (text == nullptr) return nullptr;
    return const_cast<char *>(strchr(text, character));
}

char *str_rchr(const char *text, int character) {
    if (text == nullptr) return nullptr;
    return const_cast<char *>(strrchr(text, character));
}

TOVAN_IDENT(str_chr, "8.4", "26/11/21")
