// lverror.cc: messages about the text that is being expanded.
#include "lvexpand.h"

#include "errexit.h"
#include "ident.h"
#include "private_error.h"

#include <stdarg.h>
#include <stdio.h>

constinit const char *curfile = nullptr;
constinit int curln = 0;

namespace {

// "tool:file:line: ", or "tool:file: " and a word when no line is known.
// Deliberate: the word is printed only without a line number (test
// says_warning_only_without_a_line).
void report(const char *word, const char *format, va_list arguments) {
    const char *file = curfile != nullptr ? curfile : "";
    if (progname != nullptr) fprintf(stderr, "%s:", progname);
    if (curln != 0) {
        fprintf(stderr, "%s:%d: ", file, curln);
    } else {
        fprintf(stderr, "%s: %s", file, word);
    }
    tovan::verror(format, arguments, "\n");
}

}  // namespace

void lverror(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    report("", format, arguments);
    va_end(arguments);
    errexit("aborted due to above error in kivs expansion");
}

void lvwarning(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    report("Warning: ", format, arguments);
    va_end(arguments);
}

TOVAN_IDENT(lverror, "8.4", "26/11/21")
