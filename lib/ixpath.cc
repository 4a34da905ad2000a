// ixpath.cc: paths with drive letters and backslashes in the tree's form.
#include "dospath.h"

#include "ident.h"
#include "private_istype.h"
#include "private_map_root.h"

#include <string.h>

namespace {

enum flag { empty_first = 1, blank_between = 2 };

// Most paths are shorter; longer ones grow.
constexpr int path_room = 120;

constexpr int drive_length = 2;  // "d:"

bool is_drive_form(const char *path) {
    return tovan::in_class(path[0], tovan::class_lower) && path[1] == ':';
}

char upper_case(char letter) {
    return static_cast<char>(letter - 'a' + 'A');
}

// Appends what the path's root is in the tree; the rest of the path.
const char *put_root(dy *output, const char *path) {
    const maprec *map = tovan::first_mapping(tovan::tree_mapping, path, false);
    if (map != nullptr) {
        dystr(output, map->to);
        return path + map->fromlen;
    }
    if (!is_drive_form(path)) return path;
    dystr(output, "//");
    dyaddc(output, upper_case(*path));
    return path + drive_length;
}

void put_rest(dy *output, const char *rest) {
    for (;;) {
        const char *backslash = strchr(rest, '\\');
        if (backslash == nullptr) break;
        dyspan(output, rest, backslash);
        dyaddc(output, '/');
        rest = backslash + strspn(backslash, "\\");
    }
    dystr(output, rest);
}

}  // namespace

char *ixpath(dy *output, const char *path, int flags) {
    if ((flags & empty_first) != 0)
        dyreuse(output, path_room);
    else if ((flags & blank_between) != 0 && output->length > 0)
        dyaddc(output, ' ');
    put_rest(output, put_root(output, path));
    return output->buffer;
}

TOVAN_IDENT(ixpath, "8.4", "26/11/21")
