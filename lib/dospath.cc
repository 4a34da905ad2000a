// dospath.cc: paths of the tree with drive letters and backslashes.
#include "dospath.h"

#include "ident.h"
#include "private_istype.h"
#include "private_map_root.h"

#include <stddef.h>
#include <string.h>

namespace {

// Most paths are shorter; longer ones grow.
constexpr int path_room = 120;

constexpr size_t drive_length = 3;  // "//D"

bool is_drive_form(const char *path) {
    return path[0] == '/' && path[1] == '/' &&
           tovan::in_class(path[2], tovan::class_upper) &&
           (path[3] == '/' || path[3] == '\0');
}

char lower_case(char letter) {
    return static_cast<char>(letter - 'A' + 'a');
}

}  // namespace

char *dospath(dy *output, const char *path, const char *extension, int reset,
              int mode) {
    if (reset != 0) dyreuse(output, path_room);
    const char *rest = mkfmap(output, mode, path);
    const char *dot = extension != nullptr ? strrchr(rest, '.') : nullptr;
    putpart(output, mode, rest, dot);
    return dystr(output, extension);
}

const char *mkfmap(dy *output, int mode, const char *path) {
    if (*path != '/') return path;
    if (is_drive_form(path)) {
        dyaddc(output, lower_case(path[2]));
        dyaddc(output, ':');
        return path + drive_length;
    }
    const maprec *map = tovan::first_mapping(tovan::drive_mapping, path, true);
    if (map == nullptr) return path;
    putpart(output, mode, map->to, nullptr);
    return path + map->fromlen;
}

void putpart(dy *output, int mode, const char *start, const char *end) {
    if (end == nullptr) end = start + strlen(start);
    const char *separator = mode == 0 ? "/" : mode > 1 ? "\\\\" : "\\";
    while (start < end) {
        size_t left = static_cast<size_t>(end - start);
        const void *slash = memchr(start, '/', left);
        if (slash == nullptr) break;
        const char *at = static_cast<const char *>(slash);
        dyspan(output, start, at);
        dystr(output, separator);
        start = at + 1;
    }
    dyspan(output, start, end);
}

TOVAN_IDENT(dospath, "8.4", "26/11/21")
