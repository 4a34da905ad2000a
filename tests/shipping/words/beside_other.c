/* beside_other.c: a program that means libtovan's words, and links a library
   that means the C library's. */
#define _GNU_SOURCE
#include <stdlib.h>
#include <tovan/tovan.h>
#include <unistd.h>

void other_speaks(void);

int main(void) {
    char name[] = "program-XXXXXX";
    int file = mkstemp(name);

    dup2(1, 8);
    close(file);
    unlink(name);
    error("from %s", "program");
    other_speaks();
    return 0;
}
