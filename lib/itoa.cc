// itoa.cc: decimal form of integers.
#include "convert.h"

#include "ident.h"

// The one function that assert() calls is declared only where assert() works.
#undef NDEBUG
#include <assert.h>

char *itoa(int value, char *buffer, int radix) {
    // Not assert(): the check holds in every build, and names the place under
    // which it is known.
    if (radix != 10) __assert_fail("radix == 10", "lib/itoa", 43, "itoa");
    char digits[10];  // of 2147483648
    unsigned rest = static_cast<unsigned>(value);
    if (value < 0) rest = 0 - rest;
    int count = 0;
    do {
        digits[count++] = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest != 0);
    char *to = buffer;
    if (value < 0) *to++ = '-';
    while (count > 0)
        *to++ = digits[--count];
    *to = '\0';
    return buffer;
}

TOVAN_IDENT(itoa, "8.4", "26/11/21")
