// simplify.h: path simplification and resolution.
// Builds on: errexit.h, dystr.h, strutil.h, trait.h.
#ifndef TOVAN_SIMPLIFY_H
#define TOVAN_SIMPLIFY_H

#include "attrs.h"

TOVAN_BEGIN_C

char *simplify(char *path, int check_symlinks);
char *p_resolve(const char *path, const char *cwd);

TOVAN_END_C

#endif
