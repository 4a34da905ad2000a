// errmsg.cc: error numbers to texts.
#include "errexit.h"

#include "ident.h"

#include <errno.h>
#include <string.h>

namespace {

// Deliberate: 32767 is already unknown (test errmsg_rows).
constexpr int largest_number = 32766;

const char *text_of(int number) {
    if (number > largest_number || number < -app_nerr) return "Unknown error";
    if (number < 0) return app_errlist[-number - 1];
    return strerror(number);
}

}  // namespace

const char *errmsg(int number) {
    const char *text = text_of(number);
    return text != nullptr ? text : "The NULL error message";
}

const char *syserr(void) {
    return errmsg(errno);
}

int fakesyserr(int number) {
    errno = number;
    return -1;
}

TOVAN_IDENT(errmsg, "8.4", "26/11/21")
