// globber.h: the paths that match a pattern.
// Builds on: chkalloc.h, dystr.h, fmatch.h.
//
//     for (char *path = globber("src/*/[a-m]*.c"); path != NULL;
//          path = globber(NULL)) ...
//
// The components of a pattern with "*", "?" or "[" are file-name patterns
// (fmatch.h); all others are taken as they stand. "." and ".." match no
// pattern, other names with a leading dot do.
// Always: at most one directory is open for each such component.
// Order: globber(pattern), then globber(null) until null comes. There is one
// iteration in the process; a new pattern ends the one before.
// Errors: what cannot be opened is passed over.
#ifndef TOVAN_GLOBBER_H
#define TOVAN_GLOBBER_H

#include "attrs.h"

TOVAN_BEGIN_C

// Not 0: globber(pattern) shows on standard error how it took the pattern
// apart.
extern int glob_dump;

// The next path.
//   pattern   starts anew; null: goes on
//   result    in the order in which the directories give their entries; null
//             when there is none left, or nothing was started
//   owner     library until the next call
//   edge      a pattern without "*", "?" and "[" gives itself once, without a
//             look at what exists; behind a component with one, what is taken
//             as it stands has to exist. "*/" gives directories, with their
//             slash. The result may be passed as the next pattern
char *globber(const char *pattern);

TOVAN_END_C

#endif
