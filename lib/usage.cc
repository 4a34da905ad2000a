// usage.cc: the general word alone, so that a program may define its own.
#include "usage.h"

#include "ident.h"
#include "private_usage.h"

void usage(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    tovan::vusage(format, arguments);
}

TOVAN_IDENT(usage, "8.4", "26/11/21")
