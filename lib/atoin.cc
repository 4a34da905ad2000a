// atoin.cc: bounded decimal numbers.
#include "convert.h"

#include "ident.h"

namespace {

bool is_digit(char character) {
    return '0' <= character && character <= '9';
}

bool is_sign(char character) {
    return character == '+' || character == '-';
}

bool is_line_blank(char character) {
    return character == ' ' || character == '\t';
}

// The number modulo 2 to the width of Unsigned: there is no overflow check,
// and unsigned numbers wrap without harm.
template <typename Unsigned>
Unsigned number_in(const char *text, int n) {
    Unsigned value = 0;
    char sign = '\0';
    for (int i = 0; i < n; i++) {
        const char next = text[i];
        if (is_digit(next)) {
            // Deliberate: digits do not count as a sign seen, so "12 34" reads
            // as 1234 and "12-3" as -123 (test atoin_sign_after_digits).
            value = value * 10 + static_cast<Unsigned>(next - '0');
        } else if (sign == '\0' && is_sign(next)) {
            sign = next;
        } else if (sign != '\0' || !is_line_blank(next)) {
            break;
        }
    }
    return sign == '-' ? 0 - value : value;
}

}  // namespace

int atoin(const char *text, int n) {
    return static_cast<int>(number_in<unsigned>(text, n));
}

long atoln(const char *text, int n) {
    return static_cast<long>(number_in<unsigned long>(text, n));
}

TOVAN_IDENT(atoin, "8.4", "26/11/21")
