// opentmp.h: directories and links.
// Builds on: errexit.h, chkalloc.h, trait.h, execstr.h.
#ifndef TOVAN_OPENTMP_H
#define TOVAN_OPENTMP_H

#include "attrs.h"

#include <sys/stat.h>

TOVAN_BEGIN_C

int makedir(const char *path, int mode, int keep_umask, struct stat *status);
int issymlink(const char *path);
int gotsymlinks(void);

TOVAN_END_C

#endif
