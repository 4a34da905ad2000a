// p_table.cc: the characters that separate paths.
#include "strutil.h"

#include "ident.h"
#include "private_table.h"

namespace {

consteval unsigned char separators_of(int character) {
    switch (character) {
        case '/':
            return 0x1;
        case '\\':
            return 0x2;
        case ':':
            return 0x4;
        case ';':
            return 0x8;
        default:
            return 0;
    }
}

}  // namespace

constinit const unsigned char p_table[256] = {TOVAN_TABLE_256(separators_of)};

TOVAN_IDENT(p_table, "8.4", "26/11/21")
