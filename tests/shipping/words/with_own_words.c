/* with_own_words.c: what the library itself does by the meaning of the general
   words: it warns, fixes lines, expands calls, asks traits, swaps descriptors,
   follows variables of search paths, makes temporary files, and complains. */
#include <stdio.h>
#include <stdlib.h>
#include <tovan/tovan.h>

static void write_line(const char *text, int length) {
    fwrite(text, 1, (size_t)length, stdout);
}

int main(void) {
    dy text = {0};
    char path[] = "//a/../b";
    char *words[] = {"", "sh", "-c", "echo output; echo error >&2", NULL};
    char *arguments[] = {"own", "-q", NULL};
    const testrec *const tests[] = {NULL};

    progname = "own";
    setvbuf(stdout, NULL, _IOLBF, 0);
    dynew(&text, 0);
    load_mappings("maps", 1);
    setsfwrite(write_line);
    sfixfile("fixed", 0);
    dytruncate(&text, 0);
    puts(lvexpand("@(splitpath a:b)", &text, "text", 1));
    puts(simplify(path, 0));
    forkcmmd(0, 2, 1, words + 1);
    puts(buildpath(&text, "%MORVA/x:%PATH"));
    puts(opentmp(".", "t", 0600, NULL) != NULL ? "a file" : "none");
    return testdriver(2, arguments, tests);
}
