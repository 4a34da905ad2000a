// lvheap.h: the variable-heap format: name hash and entry walks.
// Builds on: nothing.
#ifndef TOVAN_LVHEAP_H
#define TOVAN_LVHEAP_H

#include "attrs.h"

TOVAN_BEGIN_C

extern const unsigned char lvhshtab[256];

typedef int (*lvwalk_rtn)(int bucket, int flags, const char *name, const char *value);

TOVAN_END_C

#endif
