// usestrs.cc: how a tool explains itself.
#include "usage.h"

#include "errexit.h"
#include "ident.h"
#include "private_usage.h"

#include <stdio.h>

namespace {

// What the tool said about its arguments. Filled by usestrs(), holds until
// the next call; the texts are the tool's.
struct usage_texts {
    const char *synopsis;
    const char *const *explanation;
};
constinit usage_texts texts{};

// A part of a line that was never registered.
const char *or_empty(const char *text) {
    return text != nullptr ? text : "";
}

}  // namespace

void usestrs(const char *synopsis, const char *const *explanation) {
    texts = {synopsis, explanation};
}

void tovan::vusage(const char *format, va_list arguments) {
    if (format != nullptr) {
        vfprintf(stderr, format, arguments);
        fputc('\n', stderr);
    }
    fprintf(stderr, "Usage: %s %s\n", or_empty(progname),
            or_empty(texts.synopsis));
    use_dash_x();
    lclexit(-1);
}

void tovan::usage(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    vusage(format, arguments);
}

void use_dash_x(void) {
    if (texts.explanation == nullptr || texts.explanation[0] == nullptr) return;
    fputs("Use -x flag for explanations\n", stderr);
}

void explflags(void) {
    if (texts.synopsis != nullptr)
        printf("%s %s\n\n", or_empty(progname), texts.synopsis);
    if (texts.explanation == nullptr) return;
    for (const char *const *line = texts.explanation; *line != nullptr; line++)
        puts(*line);
}

TOVAN_IDENT(usestrs, "8.4", "26/11/21")
