// walk.h: files and everything below directories.
#ifndef TOVAN_TOOLS_WALK_H
#define TOVAN_TOOLS_WALK_H

#include <sys/stat.h>

namespace vop {

// Called for one file; `status` is not followed.
using visitor = void (*)(const char *path, const struct stat *status);

// Visits a path and, below a directory, everything: a directory before what
// is in it, names in byte order. Symbolic links are not followed, slashes at
// the end of the path are left out.
//   goes_down  false: directories are visited without what is in them
//   result     whether everything could be looked at; what could not was
//              reported
bool walk(const char *root, bool goes_down, visitor visit);

}  // namespace vop

#endif
