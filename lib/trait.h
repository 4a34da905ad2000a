// trait.h: per-host settings.
// Builds on: errexit.h, chkalloc.h, findfile.h, gethome.h, lvheap.h, execstr.h.
#ifndef TOVAN_TRAIT_H
#define TOVAN_TRAIT_H

#include "attrs.h"
#include "lvheap.h"

TOVAN_BEGIN_C

const char *traits_file(int unused);
int readtab(void);
const char *trvar(const char *name);
const char *trait_str(const char *name, const char *fallback, int must);
int trait(const char *name, int fallback, int must);
int maxleaf(void);
int traitwalk(int mask, lvwalk_rtn callback);

TOVAN_END_C

#endif
