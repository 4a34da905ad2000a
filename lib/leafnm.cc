// leafnm.cc: the ends of paths.
#include "strutil.h"

#include "ident.h"

namespace {

constexpr int separator = 0x1;

bool is_separator(char character) {
    return (p_table[static_cast<unsigned char>(character)] & separator) != 0;
}

}  // namespace

char *leafnm(const char *path) {
    const char *leaf = path;
    for (; *path != '\0'; path++) {
        if (is_separator(*path)) leaf = path + 1;
    }
    return const_cast<char *>(leaf);
}

int p_rootlen(const char *path) {
    int length = 0;
    while (is_separator(path[length]))
        length++;
    return length;
}

TOVAN_IDENT(leafnm, "8.4", "26/11/21")
