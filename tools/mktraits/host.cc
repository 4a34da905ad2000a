// host.cc: limits, programs and properties of this host.
#include "mktraits/host.h"

#include "shared/trace.h"

#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <tovan/chkalloc.h>
#include <tovan/errexit.h>
#include <tovan/execstr.h>
#include <unistd.h>

using mktraits::trait_list;

namespace {

TOOL_TRACE(limits, "what the system says to each question")
TOOL_TRACE(search, "where programs are found, and looked for (2)")

void add(trait_list &list, const char *name, const char *value) {
    list.traits[list.count++] = {name, value, 0};
}

void add_number(trait_list &list, const char *name, long number) {
    if (ddt_trace(&trace_limits, 1, 1)) eprintf("%s: %ld\n", name, number);
    if (number < 0) return;  // no limit, or none that is known
    char text[24];
    snprintf(text, sizeof text, "%ld", number);
    add(list, name, savestr(text));
}

struct limit {
    const char *name;
    int code;
};

// Limits of the file system that everything hangs in.
constexpr limit path_limits[] = {
    {"MAXLEAFLEN", _PC_NAME_MAX},
    {"PATH_MAX", _PC_PATH_MAX},
    {"LINK_MAX", _PC_LINK_MAX},
    {"PIPE_BUF", _PC_PIPE_BUF},
};

constexpr limit system_limits[] = {
    {"ARG_MAX", _SC_ARG_MAX},     {"OPEN_MAX", _SC_OPEN_MAX},
    {"CHILD_MAX", _SC_CHILD_MAX}, {"HOST_NAME_MAX", _SC_HOST_NAME_MAX},
    {"PAGE_SIZE", _SC_PAGESIZE},  {"PROCESSORS", _SC_NPROCESSORS_ONLN},
};

struct program {
    const char *trait;
    const char *name;
};

constexpr program programs[] = {
    {"_T_sh", "sh"},
    {"_T_binsh", "sh"},
    {"_T_mkdir", "mkdir"},
};
static_assert(sizeof path_limits / sizeof(limit) +
                  sizeof system_limits / sizeof(limit) +
                  sizeof programs / sizeof(program) + 1 <=
              mktraits::most_traits);

// Adds the place of a program, when it has one along the path.
void add_program(trait_list &list, const char *path, const program &wanted) {
    dy candidate = {};
    while (path != nullptr) {
        path = tryfile(path, wanted.name, &candidate);
        if (ddt_trace(&trace_search, 2, 1)) eprintf("%s?\n", candidate.buffer);
        if (access(candidate.buffer, X_OK) == 0) {
            if (ddt_trace(&trace_search, 1, 1))
                eprintf("%s: %s\n", wanted.trait, candidate.buffer);
            add(list, wanted.trait, candidate.buffer);
            return;
        }
    }
    if (ddt_trace(&trace_search, 1, 1)) eprintf("%s: none\n", wanted.trait);
    free(candidate.buffer);
}

// Looks in the directories of the standard utilities, whatever the caller's
// PATH is.
void add_programs(trait_list &list) {
    size_t size = confstr(_CS_PATH, nullptr, 0);
    if (size == 0) return;
    char *path = static_cast<char *>(chkalloc(size));
    confstr(_CS_PATH, path, size);
    for (const program &one : programs) {
        add_program(list, path, one);
    }
    free(path);
}

// Whether "//" is another directory than "/".
bool has_double_slash_root() {
    struct stat root;
    struct stat other;
    if (stat("/", &root) == -1 || stat("//", &other) == -1) return false;
    return root.st_dev != other.st_dev || root.st_ino != other.st_ino;
}

}  // namespace

trait_list mktraits::ask_host() {
    trait_list list = {};
    for (const limit &one : path_limits) {
        add_number(list, one.name, pathconf("/", one.code));
    }
    for (const limit &one : system_limits) {
        add_number(list, one.name, sysconf(one.code));
    }
    add_programs(list);
    if (has_double_slash_root()) add(list, "DBLESLASHROOT", "1");
    return list;
}
