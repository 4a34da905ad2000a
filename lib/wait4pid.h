// wait4pid.h: process waiting and signals.
// Builds on: chkalloc.h, convert.h.
#ifndef TOVAN_WAIT4PID_H
#define TOVAN_WAIT4PID_H

#include "attrs.h"

#include <sys/types.h>

TOVAN_BEGIN_C

pid_t waitforpid(pid_t pid, int *status);
pid_t wait4pid(pid_t pid, int *status);
void simulate_waitpid(void);
void savesigs(int slot, int operation);
int whichsig(const char *text);
const char *signame(int number);
int highest_sig(void);
int stopsignum(void);

TOVAN_END_C

#endif
