// manners.cc: what people try on every tool.
#include "shared/manners.h"

#include <errno.h>
#include <stdio.h>
#include <tovan/ddt.h>
#include <tovan/errexit.h>
#include <tovan/strutil.h>

void tools::start(const char *first_argument) {
    progname = leafnm(first_argument);
    ddt_setup();
}

void tools::print_version() {
    printf("%s (libtovan) 8.4.1\n", progname);
}

void tools::finish(int status) {
    // The errno of a write that failed long ago is not known any more.
    errno = EIO;
    if (fflush(stdout) != 0 || ferror(stdout) != 0) {
        errexit("standard output: %s", syserr());
    }
    lclexit(status);
}
