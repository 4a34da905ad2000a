// lvfnfile.cc: expansion functions that look for files.
#include "lvexpand.h"

#include "dystr.h"
#include "execstr.h"
#include "ident.h"
#include "lvget.h"
#include "private_lvexpand.h"

#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char default_path[] = "/bin";  // when PATH is unset

// The value of PATH. Filled by the first lvfn_prog() that needs it; holds for
// the process; never released.
constinit tovan::first_use search_path{};

// The directories that were named after the file, or else those of SrcPath.
char **directories_of(char **words) {
    return words[1] != nullptr ? words + 1 : lvsrcdirs(0);
}

char *add_candidate(dy *output, const char *directory, const char *file) {
    if (strcmp(directory, ".") != 0) {
        dystr(output, directory);
        dyaddc(output, '/');
    }
    return dystr(output, file);
}

bool is_program(const char *path) {
    struct stat status;
    return access(path, X_OK) == 0 && stat(path, &status) == 0 &&
           S_ISREG(status.st_mode);
}

const char *program_path() {
    if (!search_path.made) {
        const char *path = getenv("PATH");
        tovan::remember(&search_path, path != nullptr ? path : default_path);
    }
    return search_path.text;
}

bool is_on_path(const char *name) {
    dy *candidate = dyalloc();
    const char *path = program_path();
    bool found = false;
    // tryfile() takes an empty element for the bare name.
    while (path != nullptr && !found) {
        path = tryfile(path, name, candidate);
        found = is_program(candidate->buffer);
    }
    dyfree(candidate);
    return found;
}

}  // namespace

void lvfn_exists(char *argument, dy *output) {
    tovan::add_truth(output, access(argument, F_OK) == 0);
}

void lvfn_findfile(char *argument, dy *output) {
    char **words = tovan::words_of(argument);
    const char *file = words[0];
    if (file == nullptr) return;
    if (*file == '/') {
        dystr(output, file);
        return;
    }
    dy *candidate = dyalloc();
    const char *found = file;
    for (char **directory = directories_of(words); *directory != nullptr;
         directory++) {
        dytruncate(candidate, 0);
        if (access(add_candidate(candidate, *directory, file), R_OK) == 0) {
            found = candidate->buffer;
            break;
        }
    }
    dystr(output, found);
    dyfree(candidate);
}

void lvfn_isdir(char *argument, dy *output) {
    struct stat status;
    bool found = stat(argument, &status) == 0;
    tovan::add_truth(output, found && S_ISDIR(status.st_mode));
}

void lvfn_paths(char *argument, dy *output) {
    char **words = tovan::words_of(argument);
    const char *file = words[0];
    if (file == nullptr) lverror("@(paths ...) invoked without arguments");
    if (*file == '/') {
        dystr(output, file);
        return;
    }
    char **directories = directories_of(words);
    for (char **directory = directories; *directory != nullptr; directory++) {
        tovan::add_separator(output, directory == directories);
        add_candidate(output, *directory, file);
    }
}

void lvfn_prog(char *argument, dy *output) {
    bool is_path = strchr(argument, '/') != nullptr;
    tovan::add_truth(output,
                     is_path ? is_program(argument) : is_on_path(argument));
}

TOVAN_IDENT(lvfnfile, "8.4", "26/11/21")
