// repchar.cc: printable forms of all characters.
#include "istype.h"

#include "ident.h"
#include "private_table.h"

namespace {

struct form {
    char text[sizeof "\\377"];
};

consteval form form_of(int code) {
    constexpr char letters[] = "abtnvfr";  // of the codes 7 to 13
    if (code >= 32 && code <= 126) return {{static_cast<char>(code)}};
    if (code >= 7 && code <= 13) return {{'\\', letters[code - 7]}};
    return {{'\\', static_cast<char>('0' + (code >> 6)),
             static_cast<char>('0' + (code >> 3 & 7)),
             static_cast<char>('0' + (code & 7))}};
}

constexpr form forms[256] = {TOVAN_TABLE_256(form_of)};

}  // namespace

#define TEXT_OF(code) forms[code].text
constinit const char *const rep_char[256] = {TOVAN_TABLE_256(TEXT_OF)};

TOVAN_IDENT(repchar, "8.4", "26/11/21")
