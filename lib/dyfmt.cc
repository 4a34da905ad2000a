// dyfmt.cc: formatted text, with "@" as the introducer.
#include "dystr.h"

#include "convert.h"
#include "ident.h"

#include <stdarg.h>
#include <string.h>

namespace {

// "-2147483648" and its terminator.
constexpr int decimal_size = 12;

void append_decimal(dy *string, int number) {
    char digits[decimal_size];
    dystr(string, itoa(number, digits, 10));
}

}  // namespace

char *dyfmt(dy *string, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    char *buffer = dyvfmt(string, format, arguments);
    va_end(arguments);
    return buffer;
}

char *dyvfmt(dy *string, const char *format, va_list arguments) {
    while (*format != '\0') {
        const char *at = strchr(format, '@');
        if (at == nullptr) return dystr(string, format);
        dyspan(string, format, at);
        format = at + 2;
        switch (at[1]) {
            case 's':
                dystr(string, va_arg(arguments, const char *));
                break;
            case 'S': {
                const char *start = va_arg(arguments, const char *);
                dyspan(string, start, va_arg(arguments, const char *));
                break;
            }
            case 'd':
                append_decimal(string, va_arg(arguments, int));
                break;
            case 'c':
                dyaddc(string, va_arg(arguments, int));
                break;
            case '@':
                dyaddc(string, '@');
                break;
            default:  // no directive: what follows is ordinary text
                dyaddc(string, '@');
                format = at + 1;
        }
    }
    return string->buffer;
}

TOVAN_IDENT(dyfmt, "8.4", "26/11/21")
