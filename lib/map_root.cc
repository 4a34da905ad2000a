// map_root.cc: the beginnings of paths, replaced by the root maps.
#include "map_root.h"

#include "dystr.h"
#include "findfile.h"
#include "gethome.h"
#include "ident.h"
#include "private_map_root.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace {

// Whether the two files were read; set by load_rootmaps(), for the process.
constinit bool files_read = false;

void load_system_maps() {
    char *file = findfile("data/roots.map", "%MORVA", 1);
    load_mappings(file, 1);
    free(file);
}

void load_user_maps() {
    const char *home = home_morva(nullptr);
    dy *file = dyalloc();
    dyfmt(file, "@s/roots.map", home);
    if (access(file->buffer, R_OK) == -1) {
        dytruncate(file, 0);
        dyfmt(file, "@s/maproots", home);
    }
    load_mappings(file->buffer, 0);
    dyfree(file);
}

}  // namespace

const maprec *tovan::first_mapping(int type, const char *path, bool whole) {
    size_t length = strlen(path);
    for (const maprec *map = load_rootmaps(); map->from != nullptr; ++map) {
        if (map->type != type) continue;
        size_t fromlen = static_cast<size_t>(map->fromlen);
        if (fromlen > length) continue;
        char next = path[fromlen];
        if (whole && next != '\0' && next != '/') continue;
        if (memcmp(path, map->from, fromlen) == 0) return map;
    }
    return nullptr;
}

void map_root(const char *path, dy *output) {
    const maprec *map = tovan::first_mapping(tovan::root_mapping, path, true);
    if (map != nullptr) {
        dystr(output, map->to);
        path += map->fromlen;
    }
    dystr(output, path);
}

maprec *load_rootmaps(void) {
    if (!files_read) {
        files_read = true;
        load_system_maps();
        load_user_maps();
    }
    return tovan::mapping_records();
}

TOVAN_IDENT(map_root, "8.4", "26/11/21")
