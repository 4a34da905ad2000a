// getdylin.h: line and word input.
// Builds on: errexit.h, chkalloc.h, dystr.h, dypadd.h, istype.h.
#ifndef TOVAN_GETDYLIN_H
#define TOVAN_GETDYLIN_H

#include "attrs.h"
#include "dypadd.h"
#include "dystr.h"

#include <stdio.h>

TOVAN_BEGIN_C

typedef struct rdy {
    int descriptor;
    int position;
    int fill;
    int at_end;
    char buffer[4096];
} rdy;

typedef struct blk1 {
    char *name;
    char *end;
    char data[1025];
} blk1;

char *readdyline(FILE *stream, dy *line, int skip);
char *getdyline(FILE *stream, dy *line, int skip);
char *getdycline(FILE *stream, dy *line, int skip);
char *getdyword(FILE *stream, dy *word, int flags);
rdy *rdy_init(int descriptor);
int rdyfilbuf(rdy *reader);
char *rdy_getline(rdy *reader, dy *line, int flags);
void **rdflist(int descriptor, dyp *array, const char *name);
blk1 *read1blk(const char *path, blk1 *block);

TOVAN_END_C

#endif
