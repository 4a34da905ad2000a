// error.cc: the general word alone, so that a program may define its own.
#include "errexit.h"

#include "ident.h"
#include "private_error.h"

int error(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    int result = tovan::verror(format, arguments, "\n");
    va_end(arguments);
    return result;
}

TOVAN_IDENT(error, "8.4", "26/11/21")
