// gethome.cc: users and their home directories.
#include "gethome.h"

#include "errexit.h"
#include "ident.h"
#include "private_gethome.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

constinit char envuser[64] = "LOGNAME";

namespace {

// As usetype() numbers them.
enum user_kind {
    nobody = 0,
    environment_user = 1,
    login_user = 2,
    real_user = 3,
    named_user = 4,
};

struct passwd *entry_of_name(const char *name) {
    struct passwd *entry = getpwnam(name);
    endpwent();
    return entry;
}

struct passwd *real_entry() {
    struct passwd *entry = getpwuid(getuid());
    endpwent();
    return entry;
}

const char *real_name() {
    const struct passwd *entry = real_entry();
    return entry != nullptr ? entry->pw_name : nullptr;
}

// The first name that is known, from the kind's own source downwards.
const char *name_of_kind(int kind, const char *user) {
    const char *name = nullptr;
    switch (kind) {
        case named_user:
            return user;
        case environment_user:
            name = getenv(envuser);
            if (name != nullptr) return name;
            [[fallthrough]];
        case login_user:
            name = getlogin();
            if (name != nullptr) return name;
            [[fallthrough]];
        case real_user:
            return real_name();
        default:
            return nullptr;
    }
}

}  // namespace

const char *tovan::behind_plus(const char *name) {
    const char *plus = strchr(name, '+');
    return plus != nullptr ? plus + 1 : name;
}

int usetype(const char *user) {
    if (user == nullptr) return *envuser == '\0' ? nobody : environment_user;
    if (strcmp(user, "-") == 0) return login_user;
    return *user == '\0' ? real_user : named_user;
}

struct passwd *getpwuser(const char *user) {
    const char *name = nullptr;
    switch (usetype(user)) {
        case nobody:
            return nullptr;
        case named_user:
            return entry_of_name(user);
        case environment_user:
            name = getenv(envuser);
            if (name == nullptr) name = getlogin();
            break;
        case login_user:
            name = getlogin();
            break;
        default:
            break;
    }
    return name != nullptr ? entry_of_name(name) : real_entry();
}

const char *getnmuser(const char *user, const char *fallback) {
    const char *name = name_of_kind(usetype(user), user);
    if (name == nullptr) name = fallback;
    return name != nullptr ? tovan::behind_plus(name) : nullptr;
}

const char *gethome(const char *user, int must) {
    const struct passwd *entry = getpwuser(user);
    if (entry != nullptr) return entry->pw_dir;
    if (must != 0) errexit("%s: no such user", user != nullptr ? user : "NULL");
    return nullptr;
}

TOVAN_IDENT(gethome, "8.4", "26/11/21")
