// manners.cc: what people try on every tool.
#include "shared/manners.h"

#include "shared/new_file.h"

#include <errno.h>
#include <stdio.h>
#include <tovan/ddt.h>
#include <tovan/errexit.h>
#include <tovan/strutil.h>
#include <unistd.h>

namespace {

// The process that is to be cleaned up after: a child that the library forks
// runs the exit hook too.
constinit pid_t owner = 0;

bool is_output_written() {
    // The errno of a write that failed long ago is not known any more.
    errno = EIO;
    return fflush(stdout) == 0 && ferror(stdout) == 0;
}

// On every way out. One that was to end well does not when its output is lost.
void leave(int status) {
    if (getpid() != owner) return;
    tools::remove_unfinished();
    if (status == -1 || is_output_written()) return;
    eprintf("%s: standard output: %s\n", progname, syserr());
    _exit(255);
}

}  // namespace

void tools::start(const char *first_argument) {
    progname = leafnm(first_argument);
    owner = getpid();
    set_exit_rtn(leave);
    ddt_setup();
}

void tools::print_version() {
    printf("%s (libtovan) 8.4.1\n", progname);
}

void tools::finish(int status) {
    lclexit(status);
}
