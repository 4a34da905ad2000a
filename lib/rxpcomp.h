// rxpcomp.h: regular expressions.
// Builds on: dystr.h.
#ifndef TOVAN_RXPCOMP_H
#define TOVAN_RXPCOMP_H

#include "attrs.h"

TOVAN_BEGIN_C

typedef struct rxpmatch {
    int count;
    struct {
        const char *start;
        const char *end;
    } pair[10];
} rxpmatch;

extern const unsigned char re_type[256];
extern unsigned char rxpbuf[1537];
extern const char *rxpeof;
extern rxpmatch matches;

int rxpcomp(const char *pattern, int delimiter, int fold);
void rxpdump(const unsigned char *program);
int rxppeval(const char *subject, const unsigned char *program);
int rxpeval(const char *subject);
int rxpcaret(const unsigned char *program);
int rxpinvert(const unsigned char *program);
char *rxprewrite(const char *replacement);

TOVAN_END_C

#endif
