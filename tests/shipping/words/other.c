/* other.c: a library that never heard of libtovan, and means the C library's
   functions. */
#define _GNU_SOURCE
#include <error.h>
#include <stdlib.h>
#include <unistd.h>

void other_speaks(void);

void other_speaks(void) {
    char name[] = "other-XXXXXX";
    int file = mkstemp(name);

    dup2(1, 9);
    close(file);
    unlink(name);
    error(0, 0, "from %s", "other");
}
