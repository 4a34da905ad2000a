// errexit.cc: fatal messages.
#include "errexit.h"

#include "ident.h"
#include "private_error.h"

#include <stdarg.h>
#include <stdio.h>

constinit const char *progname = nullptr;

namespace {

void report(const char *format, va_list arguments) {
    if (progname != nullptr) fprintf(stderr, "%s: ", progname);
    tovan::verror(format, arguments, "\n");
}

}  // namespace

void errexit(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    report(format, arguments);
    va_end(arguments);
    lclexit(-1);
}

void errorexit(int status, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    report(format, arguments);
    va_end(arguments);
    lclexit(status);
}

TOVAN_IDENT(errexit, "8.4", "26/11/21")
