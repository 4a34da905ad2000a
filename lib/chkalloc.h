// chkalloc.h: checked allocation and deferred release.
// Builds on: errexit.h.
#ifndef TOVAN_CHKALLOC_H
#define TOVAN_CHKALLOC_H

#include "attrs.h"

#include <stddef.h>

TOVAN_BEGIN_C

void *chkalloc(size_t size);
void *chkrealloc(void *block, size_t size);
char *savestr(const char *text);
char *savenstr(const char *bytes, size_t n);
char *savenfree(char *text);
void tobefreed(void *block);
void ptobefreed(void *variable); /* address of a pointer variable of any type */
void befreed(void);
void *nalloc(unsigned size);
int nfree(void *region);
void *nrealloc(void *region, unsigned size);

TOVAN_END_C

#endif
