/* notes.c: lines kept under a key in files, and read again in their order. */
#include <stdio.h>
#include <tovan/tovan.h>

static void show(const char *key, const char *line) {
    printf("%s: %s", key, line);
}

int main(int argc, char **argv) {
    enum { anew_if_missing = 2, to_read = 3 };
    ldbm_db notes = {0};
    const char *fault;

    progname = leafnm(argv[0]);
    usestrs("KEY [LINE]", NULL);
    if (argc != 2 && argc != 3) usage(NULL);
    fault =
        ldbminit(&notes, "notes", argc == 3 ? anew_if_missing : to_read, show);
    if (fault != NULL) errexit("notes: %s (%s)", fault, syserr());
    if (argc == 3) {
        if (ldbmadd(&notes, argv[1], argv[2]) != 0)
            errexit("%s: not kept", argv[1]);
    } else if (ldbmfind(&notes, argv[1]) == 0) {
        errexit("%s: nothing there", argv[1]);
    }
    ldbminit(&notes, NULL, 0, NULL);
    lclexit(0);
}
