// fmatch.h: file-name patterns.
// Builds on: errexit.h, rxpcomp.h.
#ifndef TOVAN_FMATCH_H
#define TOVAN_FMATCH_H

#include "attrs.h"

TOVAN_BEGIN_C

int fmatch(const char *subject, const char *pattern);
int patmatch(const char *const *words);
void fmatch_trace(int flag);

TOVAN_END_C

#endif
