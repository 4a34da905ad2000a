// strpcmp.cc: comparing strings.
#include "strutil.h"

#include "ident.h"

#include <string.h>

int strpcmp(const void *a, const void *b) {
    const char *left = *static_cast<const char *const *>(a);
    const char *right = *static_cast<const char *const *>(b);
    // Deliberate: the first characters differ as signed bytes, the others as
    // strcmp has them (test strpcmp_first_bytes_are_signed).
    int difference =
        static_cast<signed char>(*left) - static_cast<signed char>(*right);
    if (difference != 0 || *left == '\0') return difference;
    return strcmp(left + 1, right + 1);
}

int lenmatch(const char *a, const char *b) {
    int length = 0;
    while (a[length] == b[length] && a[length] != '\0')
        length++;
    return length;
}

TOVAN_IDENT(strpcmp, "8.4", "26/11/21")
