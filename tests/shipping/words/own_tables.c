/* own_tables.c: a program's own error texts and description, by definition or
   by assignment. */
#include <stdio.h>
#include <tovan/errexit.h>
#include <tovan/testdrvr.h>
#include <tovan/usage.h>

static const char *const texts[] = {"first of ours", "second of ours"};

#ifdef BY_DEFINITION
const char *const *app_errlist = texts;
int app_nerr = 2;
const char *progdesc = "what this does";
#endif

int main(void) {
    char *arguments[] = {"own", "-x", NULL};
    const testrec *const tests[] = {NULL};

#ifndef BY_DEFINITION
    app_errlist = texts;
    app_nerr = 2;
    progdesc = "what this does";
#endif
    puts(errmsg(-1));
    puts(errmsg(-2));
    puts(errmsg(-3));
    fflush(stdout);
    return testdriver(2, arguments, tests);
}
