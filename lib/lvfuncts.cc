// lvfuncts.cc: the table of the expansion functions.
#include "lvexpand.h"

#include "dypadd.h"
#include "ident.h"
#include "private_lvexpand.h"
#include "strutil.h"

#include <string.h>

// clang-format off
constexpr funct functs[] = {
    {"dosfile",    lvfn_dosfile},
    {"empty",      lvfn_empty},
    {"env",        lvfn_env},
    {"exists",     lvfn_exists},
    {"expr",       lvfn_expr},
    {"findfile",   lvfn_findfile},
    {"home",       lvfn_home},
    {"insert",     lvfn_insert},
    {"isdir",      lvfn_isdir},
    {"ixfile",     lvfn_ixfile},
    {"kivset",     lvfn_kivset},
    {"lvset",      lvfn_lvset},
    {"maproot",    lvfn_maproot},
    {"match",      lvfn_match},
    {"notempty",   lvfn_notempty},
    {"option",     lvfn_option},
    {"paths",      lvfn_paths},
    {"prog",       lvfn_prog},
    {"resolve",    lvfn_resolve},
    {"rootoftype", lvfn_rootoftype},
    {"splitpath",  lvfn_splitpath},
    {"sys",        lvfn_sys},
    {"take1st",    lvfn_take1st},
    {"trait",      lvfn_trait},
    {"value",      lvfn_value},
    {"varmatch",   lvfn_varmatch},
    {nullptr,      nullptr},
};
// clang-format on

namespace {

constexpr int function_count = sizeof functs / sizeof functs[0] - 1;

consteval bool is_ascending(const char *a, const char *b) {
    while (*a == *b && *a != '\0') {
        a++;
        b++;
    }
    return *a < *b;
}

consteval bool table_is_sorted() {
    for (int i = 1; i < function_count; i++) {
        if (!is_ascending(functs[i - 1].name, functs[i].name)) return false;
    }
    return functs[function_count].name == nullptr;
}
static_assert(table_is_sorted());

const funct *find_function(const char *name) {
    int from = 0;
    int to = function_count;
    while (from < to) {
        int middle = (from + to) / 2;
        int order = strcmp(name, functs[middle].name);
        if (order == 0) return &functs[middle];
        if (order < 0) {
            to = middle;
        } else {
            from = middle + 1;
        }
    }
    return nullptr;
}

// The words of the function that runs. Filled by words_of(); holds until the
// next function; kept for it.
constinit dyp word_list{};

}  // namespace

int runfunc(char *text, dy *output) {
    char *argument = tovan::cut_word(text);
    const funct *found = find_function(text);
    if (found == nullptr) return 1;
    found->handler(argument, output);
    return 0;
}

char **splitlist(dyp *array, char *text) {
    return reinterpret_cast<char **>(dypsplit(array, text, 0));
}

char **tovan::words_of(char *argument) {
    dypreuse(&word_list);
    return splitlist(&word_list, argument);
}

TOVAN_IDENT(lvfuncts, "8.4", "26/11/21")
