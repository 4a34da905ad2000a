// private_map_root.h (private): the records of the root maps.
// Builds on: map_root.h.
#ifndef TOVAN_PRIVATE_MAP_ROOT_H
#define TOVAN_PRIVATE_MAP_ROOT_H

#include "map_root.h"

namespace [[gnu::visibility("hidden")]] tovan {

// The letters before ">" in a mapping file.
enum mapping_type {
    drive_mapping = 1,  // D: to drive letters
    p_mapping = 2,      // P: kept, used by nothing here
    root_mapping = 3,   // M, and lines without a letter
    tree_mapping = 4,   // U: from drive letters
};

// The records as they are, without reading a file; an all-zero one ends them.
maprec *mapping_records();

// The first record of a type whose from-path begins the path, null when there
// is none; reads the files when that was not done yet.
//   whole     only where the path ends or goes on with "/"
const maprec *first_mapping(int type, const char *path, bool whole);

}  // namespace tovan

#endif
