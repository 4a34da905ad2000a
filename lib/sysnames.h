// sysnames.h: the host's system names.
// Builds on: errexit.h, dystr.h, dypadd.h, getdylin.h, findfile.h, fmatch.h.
#ifndef TOVAN_SYSNAMES_H
#define TOVAN_SYSNAMES_H

#include "attrs.h"

TOVAN_BEGIN_C

char **sysnames(int flags, char **file);
void setsysnamestab(const char *file);
void set_sys_defl(int index, const char *value);
char *unms_fix(char *text);

TOVAN_END_C

#endif
