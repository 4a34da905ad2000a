// opentmp.h: directories and links.
// Builds on: errexit.h, trait.h, execstr.h.
//
// Making a directory with given permissions, and telling symbolic links.
// Errors: look-ups give 0, makedir() -1 with errno; it ends the process only
// where forkcmmd() (execstr.h) does.
#ifndef TOVAN_OPENTMP_H
#define TOVAN_OPENTMP_H

#include "attrs.h"

#include <sys/stat.h>

TOVAN_BEGIN_C

// Makes sure that a directory is there, with these permissions. A missing one
// is made by the program that the trait _T_mkdir names ("mkdir"), run with
// the path as its only argument; what it says goes to standard error.
//   mode      the permissions; bits beyond 0777 do not count
//   keep_umask  0: bits of the process's umask are taken out of the
//             permissions; else the umask is 0 during the call
//   status    where the status of the path goes, as it was before a chmod
//   result    0 when the path is a directory now
//   fails     -1 with errno: that of stat(2) when it does not exist and could
//             not be made, ENOTDIR when it is something else
//   edge      an existing directory gets the permissions too; that this was
//             refused is not reported. The umask is always put back
int makedir(const char *path, int mode, int keep_umask, struct stat *status);

// Whether the path itself is a symbolic link.
//   result    1, or 0 also when nothing is there
int issymlink(const char *path);

// Whether the system has symbolic links: 1.
int gotsymlinks(void);

TOVAN_END_C

#endif
