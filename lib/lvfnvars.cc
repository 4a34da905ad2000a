// lvfnvars.cc: expansion functions that ask variables, traits and the
// environment.
#include "lvexpand.h"

#include "dystr.h"
#include "fmatch.h"
#include "ident.h"
#include "lvget.h"
#include "private_lvexpand.h"
#include "strutil.h"
#include "trait.h"

#include <stdlib.h>
#include <string.h>

namespace {

// The value of "System[Name]". Filled by the first lvfn_sys(); holds for the
// process; never released.
constinit tovan::first_use system_name{};

// The modes of varmatch: what stands before the name, and what it asks for.
struct varmatch_words {
    int use_plain;
    int before_name;
};

varmatch_words mode_of(const char *word) {
    if (strcmp(word, "0") == 0) return {0, 1};
    if (strcmp(word, "1") == 0 || strcmp(word, "-d") == 0) return {1, 1};
    return {0, 0};
}

int count_of(char **words) {
    int count = 0;
    while (words[count] != nullptr)
        count++;
    return count;
}

}  // namespace

void lvfn_env(char *argument, dy *output) {
    const char *value = getenv(argument);
    if (value != nullptr) dystr(output, value);
}

void lvfn_kivset(char *argument, dy *output) {
    tovan::add_truth(output, lvvar(argument) != nullptr);
}

void lvfn_lvset(char *argument, dy *output) {
    lvwarning("@(lvset ...) obsolete; change to @(kivset ...)");
    lvfn_kivset(argument, output);
}

void lvfn_option(char *argument, dy *output) {
    tovan::add_truth(output, lvoption(argument) != 0);
}

void lvfn_sys(char *argument, dy *output) {
    if (!system_name.made) tovan::remember(&system_name, lvvar("System[Name]"));
    const char *name = system_name.text;
    char **pattern = tovan::words_of(argument);
    // Chosen: an unset name matches nothing, not even "!x".
    while (name != nullptr && *pattern != nullptr && !fmatch(name, *pattern))
        pattern++;
    tovan::add_truth(output, name != nullptr && *pattern != nullptr);
}

void lvfn_trait(char *argument, dy *output) {
    const char *value = trait_str(argument, nullptr, 0);
    if (value != nullptr) dystr(output, value);
}

void lvfn_value(char *argument, dy *output) {
    const char *fallback = tovan::cut_word(argument);
    const char *value = lvvar(argument);
    dystr(output, value != nullptr ? value : fallback);
}

void lvfn_varmatch(char *argument, dy *output) {
    char **words = tovan::words_of(argument);
    if (*words == nullptr) lverror("@(varmatch ...) invoked without arguments");
    varmatch_words mode = mode_of(*words);
    char **name = words + mode.before_name;
    if (count_of(name) != 2) {
        lverror("@(varmatch ...) invoked with wrong number of arguments");
    }
    const char *value = lvvarmatch(mode.use_plain, name[0], name[1]);
    if (value != nullptr) dystr(output, value);
}

TOVAN_IDENT(lvfnvars, "8.4", "26/11/21")
