// execstr.cc: running a command line.
#include "execstr.h"

#include "chkalloc.h"
#include "dypadd.h"
#include "errexit.h"
#include "ident.h"
#include "private_split.h"
#include "trait.h"

#include <stdlib.h>
#include <string.h>

namespace {

constexpr int first_slots = 10;

// The shell gets two newlines behind the command, on purpose.
constexpr char command_end[] = "\n\n";

// One free slot, then the words. Created by the first execstr(), emptied by
// each, never released.
constinit dyp words{};

void empty_words() {
    if (words.array == nullptr) {
        dypnew(&words, first_slots);
    } else {
        dypreuse(&words);
    }
    dypadd(&words, nullptr);
}

char **first_word() {
    return reinterpret_cast<char **>(words.array) + 1;
}

// Gives the whole line to the shell; `copy` has room for it.
char **shell_vector(char *copy, const char *command, size_t length,
                    bool stops) {
    memcpy(copy, command, length);
    memcpy(copy + length, command_end, sizeof command_end);
    empty_words();
    dypadd(&words, trait_str("_T_sh", "sh", 0));
    dypadd(&words, stops ? "-ce" : "-c");
    dypadd(&words, copy);
    return first_word();
}

char **direct_vector() {
    char **argv = first_word();
    if (argv[0] != nullptr && strcmp(argv[0], "exec") == 0) argv++;
    return argv;
}

}  // namespace

int execstr(int in, int out, int err, int forks, int dash_e,
            const char *command) {
    command += strspn(command, " \t\n");
    size_t length = strlen(command);
    char *copy = static_cast<char *>(chkalloc(length + sizeof command_end));
    memcpy(copy, command, length + 1);
    empty_words();
    char **argv = tovan::split_line(copy, &words)
                      ? direct_vector()
                      : shell_vector(copy, command, length, dash_e != 0);
    int status = 0;
    if (forks == 0) {
        if (argv[0] == nullptr) lclexit(0);
        execcmmd(in, out, err, argv);
    }
    if (argv[0] != nullptr) status = forkcmmd(in, out, err, argv);
    free(copy);
    return status;
}

TOVAN_IDENT(execstr, "8.4", "26/11/21")
