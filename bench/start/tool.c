/* tool.c: a small tool on the library, linked statically. */
#include <stdio.h>
#include <stdlib.h>
#include <tovan/dystr.h>
#include <tovan/errexit.h>
#include <tovan/strutil.h>
#include <tovan/usage.h>

static const char *const explanation[] = {"Greets.", NULL};

int main(int argc, char **argv) {
    dy text;
    progname = leafnm(argv[0]);
    usestrs("[NAME]", explanation);
    dynew(&text, 0);
    dyfmt(&text, "hello @s", argc > 1 ? argv[1] : "world");
    puts(text.buffer);
    free(text.buffer);
    lclexit(0);
}
