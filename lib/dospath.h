// dospath.h: foreign path forms and include flags.
// Builds on: dystr.h, istype.h, lvget.h, map_root.h.
#ifndef TOVAN_DOSPATH_H
#define TOVAN_DOSPATH_H

#include "attrs.h"
#include "dystr.h"

TOVAN_BEGIN_C

char *dospath(dy *output, const char *path, const char *extension, int reset, int mode);
const char *mkfmap(dy *output, int mode, const char *path);
void putpart(dy *output, int mode, const char *start, const char *end);
char *ixpath(dy *output, const char *path, int flags);
void inclflgs(dy *output);
int isvopfil(const char *name);

TOVAN_END_C

#endif
