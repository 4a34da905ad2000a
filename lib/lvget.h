// lvget.h: the build tree's variables.
// Builds on: errexit.h, chkalloc.h, dystr.h, dypadd.h, lvheap.h, findfile.h, fmatch.h, execstr.h, wait4pid.h.
#ifndef TOVAN_LVGET_H
#define TOVAN_LVGET_H

#include "attrs.h"
#include "lvheap.h"

#include <stdint.h>
#include <sys/types.h>

TOVAN_BEGIN_C

extern const char *(*lvvarrtn)(const char *name);

void lvget(int r, const char *d, int reload, const char *file, const char *c);
const char *lvvar(const char *name);
const char *lvvar_f(const char *name, int *flags);
int lvoption(const char *name);
const char *lvvarmatch(int use_plain, const char *name, const char *key);
void lvwalk(int mask, lvwalk_rtn callback);
uint32_t lvgenseek(void);
uint32_t lvgen_lc(void);
char **lvsrcdirs(int skip_first);
int readblk(int descriptor, void *buffer, int count);
int lvpipe(int r, const char *d, pid_t *pid, const char *c);
const char *lvfndsrc(const char *name, const char *fallback);
void lvsvsrc(const char *path);

TOVAN_END_C

#endif
