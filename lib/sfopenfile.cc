// sfopenfile.cc: the files of the dictionary and of the file fixer.
#include "sfdict.h"

#include "errexit.h"
#include "ident.h"
#include "private_io.h"
#include "private_sfopen.h"

#include <fcntl.h>
#include <stdio.h>
#include <string.h>

namespace {

// Whether one of the readers has had standard input: for ever.
constinit bool is_stdin_taken = false;

FILE *take_stdin() {
    if (is_stdin_taken) errexit("cannot use stdin twice");
    is_stdin_taken = true;
    return stdin;
}

}  // namespace

FILE *sf_openfile(const char *path) {
    if (strcmp(path, "-") == 0) return take_stdin();
    int descriptor = tovan::open_file(path, O_RDONLY);
    FILE *stream = descriptor >= 0 ? fdopen(descriptor, "r") : nullptr;
    if (stream == nullptr) errexit("%s: cannot open", path);
    return stream;
}

// Chosen: a file that cannot be read to its end is no shorter file, it ends
// the process. Standard input stays open: its descriptor would go to the next
// file that is opened.
void tovan::close_input(FILE *stream, const char *path) {
    if (ferror(stream)) errexit("%s: %s", path, syserr());
    if (stream != stdin) fclose(stream);
}

TOVAN_IDENT(sfopenfile, "8.4", "26/11/21")
