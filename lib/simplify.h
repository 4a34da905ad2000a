// simplify.h: paths made plain and absolute.
// Builds on: chkalloc.h, dystr.h, errexit.h, opentmp.h, strutil.h, trait.h.
//
// Order: any; p_resolve() first where both are wanted.
// Errors: p_resolve() ends the process when the current directory is unknown.
#ifndef TOVAN_SIMPLIFY_H
#define TOVAN_SIMPLIFY_H

#include "attrs.h"

TOVAN_BEGIN_C

// Takes ".", ".." and repeated slashes out of a path, where it stands.
//   check_symlinks  non-zero: the component in front of a ".." stays, and
//             the ".." too, when the path up to it is a symbolic link
//   result    path, never longer than it was; "." for a relative path of
//             which nothing is left
//   edge      the empty path stays empty; ".." at the root is dropped; where
//             the trait DBLESLASHROOT is set, two leading slashes are a root
//             of their own
char *simplify(char *path, int check_symlinks);

// An absolute form of a path: itself when it begins with "/", else behind
// cwd and a slash.
//   cwd       null: the current directory, asked for whatever the path is
//   result    not simplified
//   owner     caller, free()
//   fails     no current directory: ends the process ("getcwd: system text")
char *p_resolve(const char *path, const char *cwd);

TOVAN_END_C

#endif
