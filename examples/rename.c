/* rename.c: the commands that rename files, from a regular expression and a
   template. Names that the file-name pattern does not match stay. */
#include <stdio.h>
#include <stdlib.h>
#include <tovan/tovan.h>

/* The name with its match replaced, or null when nothing matches. */
static char *renamed(const char *name, const char *template) {
    dy result = {0};
    char *middle;

    if (!rxpeval(name)) return NULL;
    dynew(&result, 0);
    dyspan(&result, name, matches.pair[0].start);
    middle = rxprewrite(template);
    dystr(&result, middle);
    free(middle);
    return dystr(&result, matches.pair[0].end);
}

int main(int argc, char **argv) {
    int fault;

    progname = leafnm(argv[0]);
    usestrs("PATTERN EXPRESSION TEMPLATE NAME...", NULL);
    if (argc < 5) usage(NULL);
    fault = rxpcomp(argv[2], 0, 0);
    if (fault < 0) errexit("%s: bad regular expression (%d)", argv[2], fault);
    for (char **name = argv + 4; *name != NULL; name++) {
        char *to = fmatch(*name, argv[1]) ? renamed(*name, argv[3]) : NULL;

        if (to != NULL) printf("mv %s %s\n", *name, to);
        free(to);
    }
    lclexit(0);
}
