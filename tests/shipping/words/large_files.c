/* large_files.c: under large-file flags the system's headers call mkstemp by
   another name. */
#define _GNU_SOURCE
#define _FILE_OFFSET_BITS 64
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <tovan/tovan.h>
#include <unistd.h>

int main(void) {
    char name[] = "large-XXXXXX";
    struct stat status;
    int file = mkstemp(name);

    if (file == -1 || fstat(file, &status) == -1) return 1;
    close(file);
    unlink(name);
    puts(S_ISREG(status.st_mode) ? "made" : "not a file");
    return 0;
}
