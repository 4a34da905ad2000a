// home_morva.cc: the user's own installation directory.
#include "gethome.h"

#include "chkalloc.h"
#include "errexit.h"
#include "ident.h"

#include <stdlib.h>
#include <string.h>

namespace {

constexpr char own_folder[] = "/.morva";

// The last answer. Filled by home_morva() when it is asked for another user;
// holds until then; the user's name is released when the next one is kept.
struct home_state {
    bool answered;  // a fatal answer is none
    char *user;     // null: the null user
    char directory[100];
};
constinit home_state home{};

bool is_same_user(const char *user) {
    if (!home.answered) return false;
    if (user == nullptr || home.user == nullptr) return user == home.user;
    return strcmp(user, home.user) == 0;
}

void remember_user(const char *user) {
    char *copy = user != nullptr ? savestr(user) : nullptr;
    free(home.user);
    home.user = copy;
    home.answered = false;
}

// Callers keep pointers to the buffer, so a longer name cannot move it.
const char *keep_directory(const char *directory, const char *suffix) {
    size_t length = strlen(directory);
    size_t suffix_size = strlen(suffix) + 1;
    if (length > sizeof home.directory - suffix_size)
        errexit("%s: home directory name too long", directory);
    memcpy(home.directory, directory, length);
    memcpy(home.directory + length, suffix, suffix_size);
    home.answered = true;
    return home.directory;
}

}  // namespace

const char *home_morva(const char *user) {
    if (is_same_user(user)) return home.directory;
    remember_user(user);
    const char *directory = nullptr;
    if (user == nullptr || *user == '\0') {
        directory = getenv("HOME_MORVA");
        if (directory != nullptr) return keep_directory(directory, "");
        directory = getenv("HOME");
    }
    if (directory == nullptr) directory = gethome(user, 1);
    return keep_directory(directory, own_folder);
}

TOVAN_IDENT(home_morva, "8.4", "26/11/21")
