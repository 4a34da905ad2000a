// eprintf.cc: warnings, under the names that only this library has.
#include "errexit.h"

#include "ident.h"
#include "private_error.h"

#include <stdio.h>

int tovan::verror(const char *format, va_list arguments, const char *end) {
    vfprintf(stderr, format, arguments);
    fputs(end, stderr);
    return fflush(stderr);
}

int tovan::error(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    int result = verror(format, arguments, "\n");
    va_end(arguments);
    return result;
}

int tovan_error(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    int result = tovan::verror(format, arguments, "\n");
    va_end(arguments);
    return result;
}

int eprintf(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    int result = tovan::verror(format, arguments, "");
    va_end(arguments);
    return result;
}

TOVAN_IDENT(eprintf, "8.4", "26/11/21")
