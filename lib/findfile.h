// findfile.h: search paths.
// Builds on: errexit.h, chkalloc.h, dystr.h, istype.h, strutil.h.
#ifndef TOVAN_FINDFILE_H
#define TOVAN_FINDFILE_H

#include "attrs.h"
#include "dystr.h"

TOVAN_BEGIN_C

extern char default_morva_path[100];

const char *deflvar(const char *name, int use_defaults, char *buffer);
const char *deflmorva(int force_default);
char *buildpath(dy *output, const char *path);
void spread(const char *start, const char *end, int use_defaults, dy *output);
char *findfile(const char *file, const char *path, int mode);

TOVAN_END_C

#endif
