// gethome.h: users and hosts.
// Builds on: errexit.h, chkalloc.h, convert.h.
#ifndef TOVAN_GETHOME_H
#define TOVAN_GETHOME_H

#include "attrs.h"

#include <grp.h>
#include <pwd.h>

TOVAN_BEGIN_C

extern char envuser[];

int usetype(const char *user);
struct passwd *getpwuser(const char *user);
const char *getnmuser(const char *user, const char *fallback);
const char *gethome(const char *user, int must);
const char *home_morva(const char *user);
const char *get_host(void);
const char *getuname(int uid);
const char *getgname(int gid);
int ingroup(int a, int b);
int gidget(void);
void dumb_dos_user(void);

TOVAN_END_C

#endif
