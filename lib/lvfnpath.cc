// lvfnpath.cc: expansion functions that rewrite paths.
#include "lvexpand.h"

#include "chkalloc.h"
#include "dospath.h"
#include "dypadd.h"
#include "dystr.h"
#include "ident.h"
#include "istype.h"
#include "lvget.h"
#include "map_root.h"
#include "private_istype.h"
#include "private_lvexpand.h"
#include "simplify.h"

#include <stdlib.h>
#include <string.h>

namespace {

// The value of "CurDir". Filled by the first lvfn_resolve(); holds for the
// process; never released.
constinit tovan::first_use current_directory{};

// The words of "RootPath". Filled by the first lvfn_rootoftype(); holds for
// the process; never released.
constinit tovan::first_use root_path{};
constinit dyp roots{};

// "-N", a mode of dosfile.
bool is_mode(const char *word) {
    return word[0] == '-' && tovan::in_class(word[1], tovan::class_digit) &&
           word[2] == '\0';
}

void find_roots() {
    if (root_path.made) return;
    const char *path = lvvar("RootPath");
    tovan::remember(&root_path, path != nullptr ? path : "/");
    dypreuse(&roots);
    splitlist(&roots, root_path.text);
}

bool has_type(const char *root, const char *type, dy *name) {
    dytruncate(name, 0);
    const char *found = lvvar(dyfmt(name, "TreeType[@s]", root));
    return found != nullptr && strcmp(found, type) == 0;
}

}  // namespace

void lvfn_dosfile(char *argument, dy *output) {
    char **words = tovan::words_of(argument);
    int mode = 0;
    if (*words != nullptr && is_mode(*words)) {
        mode = (*words)[1] - '0';
        words++;
    }
    for (char **word = words; *word != nullptr; word++) {
        tovan::add_separator(output, word == words);
        dospath(output, *word, nullptr, 0, mode);
    }
}

void lvfn_ixfile(char *argument, dy *output) {
    constexpr int blank_first = 2;
    char **words = tovan::words_of(argument);
    for (char **word = words; *word != nullptr; word++)
        ixpath(output, *word, word == words ? 0 : blank_first);
}

void lvfn_maproot(char *argument, dy *output) {
    char **words = tovan::words_of(argument);
    for (char **word = words; *word != nullptr; word++) {
        tovan::add_separator(output, word == words);
        map_root(*word, output);
    }
}

void lvfn_resolve(char *argument, dy *output) {
    char **words = tovan::words_of(argument);
    if (words[0] == nullptr) {
        lverror("@(resolve ...) invoked without an argument");
    }
    if (words[1] != nullptr) {
        lverror("@(resolve ...) invoked with multiple arguments");
    }
    if (!current_directory.made) {
        tovan::remember(&current_directory, lvvar("CurDir"));
    }
    // Chosen: symbolic links are not looked at; "a/../b" is "b".
    char *path = p_resolve(words[0], current_directory.text);
    dystr(output, simplify(path, 0));
    free(path);
}

void lvfn_rootoftype(char *argument, dy *output) {
    if (*argument == '\0') {
        lverror("@(rootoftype ...) invoked without an argument");
    }
    find_roots();
    dy *name = dyalloc();
    void **root = roots.array;
    while (*root != nullptr &&
           !has_type(static_cast<char *>(*root), argument, name)) {
        root++;
    }
    dystr(output, static_cast<char *>(*root));
    dyfree(name);
}

TOVAN_IDENT(lvfnpath, "8.4", "26/11/21")
