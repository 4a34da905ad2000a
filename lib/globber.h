// globber.h: paths that match a pattern.
// Builds on: errexit.h, dystr.h, fmatch.h.
#ifndef TOVAN_GLOBBER_H
#define TOVAN_GLOBBER_H

#include "attrs.h"

TOVAN_BEGIN_C

extern int glob_dump;

char *globber(const char *pattern);

TOVAN_END_C

#endif
