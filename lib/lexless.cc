// lexless.cc: giving characters back to a scanner.
#include "strutil.h"

#include "ident.h"

namespace {

int sign_extended(char character) {
    return static_cast<signed char>(character);
}

}  // namespace

void lexless(int n, int *length, int *last, char *token,
             void (*give_back)(int character)) {
    if (n < 0 || n > *length) n = 0;
    for (int i = *length; i-- > n;)
        give_back(sign_extended(token[i]));
    token[n] = '\0';
    if (n > 0) *last = sign_extended(token[n - 1]);
    *length = n;
}

TOVAN_IDENT(lexless, "8.4", "26/11/21")
