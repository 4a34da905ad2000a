// execstr.h: command execution.
// Builds on: errexit.h, chkalloc.h, dypadd.h, trait.h, wait4pid.h.
#ifndef TOVAN_EXECSTR_H
#define TOVAN_EXECSTR_H

#include "attrs.h"
#include "dystr.h"

TOVAN_BEGIN_C

int execstr(int in, int out, int err, int forks, int dash_e, const char *command);
int forkcmmd(int in, int out, int err, char **argv);
TOVAN_NORETURN void execcmmd(int in, int out, int err, char **argv); /* argv[-1] is writable */
void closeonfork(int operation, int descriptor);
const char *getpath(void);
const char *tryfile(const char *path, const char *name, dy *candidate);
void setstdfids(int in, int out, int err);
int protect(int descriptor, int forbidden);
/* dup2 has the declaration of <unistd.h> */

TOVAN_END_C

#endif
