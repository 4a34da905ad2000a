// dospath.h: paths with drive letters and backslashes, and include flags.
// Builds on: istype.h, strutil.h, dystr.h, lvget.h, map_root.h.
//
// Some build commands name files by a drive letter and backslashes. In the
// tree "//D/src" stands for drive d; other roots are converted by the root
// maps, those of type "D" on the way out and those of type "U" on the way
// back. Other foreign forms are left as they are.
// Always: results are appended unless a function is asked to empty its
// output; no text may lie in the output's buffer.
// Errors: those of load_rootmaps; inclflgs also those of lvvar.
#ifndef TOVAN_DOSPATH_H
#define TOVAN_DOSPATH_H

#include "attrs.h"
#include "dystr.h"

TOVAN_BEGIN_C

// Converts a path of the tree to the foreign form.
//   extension  null, or what stands instead of the last "." and all behind
//             it, or at the end of a path without one
//   reset     non-zero: the output is emptied first
//   mode      0: "/" stays; 1: "/" becomes "\"; 2 or more: "\\"
//   result    the output's buffer
//   owner     record
//   edge      the last "." counts wherever it is. Deliberate: also in a
//             folder's name (test dospath_takes_a_dot_in_a_folder)
char *dospath(dy *output, const char *path, const char *extension, int reset,
              int mode);

// Appends the foreign form of a path's root: "d:" for "//D", or the to-path,
// by putpart, of the first record of type "D" for the path's beginning.
//   result    the rest of the path; the path itself when it has no such root
//             or does not begin with "/"
const char *mkfmap(dy *output, int mode, const char *path);

// Appends characters, "/" as the mode says.
//   end       null: to the end of the string
//   mode      as for dospath; below 0 is as 1
void putpart(dy *output, int mode, const char *start, const char *end);

// Converts a foreign path to the form of the tree: the to-path for the
// from-path of the first record of type "U", else "//D" for "d:", then the
// rest with "/" for each run of backslashes.
//   flags     1: the output is emptied first; else 2: a blank is appended
//             first when the output is not empty
//   result    the output's buffer
//   owner     record
// Deliberate: a from-path may end within a component here (test
// ixpath_prefix_may_end_anywhere).
char *ixpath(dy *output, const char *path, int flags);

// Appends "-I" and the word for each word of the variable "InclPath",
// separated by blanks.
//   edge      the variable is looked at once; later calls append the same
void inclflgs(dy *output);

// 1 for the names of the build system's control files, "vopfile" and
// "vopfile2", else 0.
int isvopfil(const char *name);

TOVAN_END_C

#endif
