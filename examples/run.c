/* run.c: runs a command line and says how it ended. */
#include <stdio.h>
#include <sys/wait.h>
#include <tovan/tovan.h>

int main(int argc, char **argv) {
    int status;

    progname = leafnm(argv[0]);
    usestrs("COMMAND", NULL);
    if (argc != 2) usage(NULL);
    savesigs(0, 0);
    savesigs(1, 0);
    status = execstr(0, 1, 2, 1, 0, argv[1]);
    if (WIFSIGNALED(status)) {
        printf("signal %s\n", signame(WTERMSIG(status)));
        lclexit(1);
    }
    printf("status %d\n", WEXITSTATUS(status));
    lclexit(WEXITSTATUS(status));
}
