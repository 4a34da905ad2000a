/* columns.c: the words of standard input, sorted, in columns. */
#include <stdio.h>
#include <stdlib.h>
#include <tovan/tovan.h>

int main(int argc, char **argv) {
    dy word = {0};
    dyp words = {0};

    (void)argc;
    progname = leafnm(argv[0]);
    dypreuse(&words);
    while (getdyword(stdin, &word, 1) != NULL)
        dypadd(&words, dycache(word.buffer, word.length));
    free(word.buffer);
    if (words.count == 0) errexit("no words");
    qsort(words.array, (size_t)words.count, sizeof *words.array, strpcmp);
    putcols(NULL, (const char *const *)words.array, 24, 0);
    free(words.array);
    lclexit(0);
}
