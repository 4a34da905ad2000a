// getuname.cc: names of user and group numbers.
#include "gethome.h"

#include "chkalloc.h"
#include "convert.h"
#include "ident.h"
#include "private_gethome.h"

#include <stdlib.h>

namespace {

constexpr int slots = 64;  // a power of two: the low six bits are the slot

struct named_number {
    int number;
    char *name;  // null: the slot is empty
};

// Filled by getuname() and getgname(); a name holds until another number
// takes its slot.
constinit named_number users[slots]{};
constinit named_number groups[slots]{};

// The name of the number, or null when it must be looked up.
const char *known_name(const named_number *slot, int number) {
    bool known = slot->name != nullptr && number >= 0 && slot->number == number;
    return known ? slot->name : nullptr;
}

// Keeps a copy of the name, or the number itself when it has none.
const char *keep_name(named_number *slot, int number, const char *name) {
    char digits[12];
    if (name == nullptr) name = itoa(number, digits, 10);
    free(slot->name);
    slot->name = savestr(name);
    slot->number = number;
    return slot->name;
}

}  // namespace

const char *getuname(int uid) {
    named_number *slot = &users[uid & (slots - 1)];
    const char *name = known_name(slot, uid);
    if (name != nullptr) return name;
    const struct passwd *entry = getpwuid(static_cast<uid_t>(uid));
    if (entry != nullptr) name = tovan::behind_plus(entry->pw_name);
    return keep_name(slot, uid, name);
}

// Deliberate: a "+" in a group's name stays (test
// getgname_keeps_the_whole_name).
const char *getgname(int gid) {
    named_number *slot = &groups[gid & (slots - 1)];
    const char *name = known_name(slot, gid);
    if (name != nullptr) return name;
    const struct group *entry = getgrgid(static_cast<gid_t>(gid));
    if (entry != nullptr) name = entry->gr_name;
    return keep_name(slot, gid, name);
}

TOVAN_IDENT(getuname, "8.4", "26/11/21")
