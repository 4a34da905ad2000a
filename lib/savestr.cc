// savestr.cc: strings copied to the heap.
#include "chkalloc.h"

#include "ident.h"

#include <stdlib.h>
#include <string.h>

char *savestr(const char *text) {
    size_t size = strlen(text) + 1;
    return static_cast<char *>(memcpy(chkalloc(size), text, size));
}

char *savenstr(const char *bytes, size_t n) {
    char *copy = static_cast<char *>(chkalloc(n + 1));
    if (n != 0) memcpy(copy, bytes, n);
    copy[n] = '\0';
    return copy;
}

char *savenfree(char *text) {
    char *copy = savestr(text);
    free(text);
    return copy;
}

TOVAN_IDENT(savestr, "8.4", "26/11/21")
