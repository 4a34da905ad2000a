// private_execstr.h (private): what starting a command is made of.
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_EXECSTR_H
#define TOVAN_PRIVATE_EXECSTR_H

#include <signal.h>
#include <sys/types.h>

namespace [[gnu::visibility("hidden")]] tovan {

// As protect() and dup2() of execstr.h. A program may own these words.
int protect(int descriptor, int forbidden);
int dup_onto(int from, int to);

// As setstdfids(), without an end of the process.
//   result    null, or what failed, with errno
const char *place_descriptors(int in, int out, int err);

// As getpath(), without keeping what it finds.
const char *path_in_force();

// Starts a command in a child that shares this process's memory until the
// program runs. The child is prepared exactly as that of forkcmmd(). All
// signals must be blocked.
//   mask      the program's signal mask
//   result    the child, which is running the program; -1 when it could not
//             be started: nothing was said, no child is left
pid_t start_sharing(int in, int out, int err, char **argv,
                    const sigset_t *mask);

}  // namespace tovan

#endif
