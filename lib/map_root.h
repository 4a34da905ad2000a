// map_root.h: root mapping.
// Builds on: errexit.h, dystr.h, dypadd.h, getdylin.h, sysnames.h, findfile.h, gethome.h, fmatch.h.
#ifndef TOVAN_MAP_ROOT_H
#define TOVAN_MAP_ROOT_H

#include "attrs.h"
#include "dystr.h"

TOVAN_BEGIN_C

typedef struct maprec {
    int type;
    char *from;
    int fromlen;
    char *to;
} maprec;

void map_root(const char *path, dy *output);
maprec *load_rootmaps(void);
void load_mappings(const char *file, int must_exist);
int chk_host(char *condition, int invert);
void add_map(int type, char *from, int fromlen, char *to);

TOVAN_END_C

#endif
