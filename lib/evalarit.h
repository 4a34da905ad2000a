// evalarit.h: integer arithmetic.
// Builds on: istype.h.
#ifndef TOVAN_EVALARIT_H
#define TOVAN_EVALARIT_H

#include "attrs.h"

TOVAN_BEGIN_C

const char *evalarith(const char *text, int *result, const int *variables);

TOVAN_END_C

#endif
