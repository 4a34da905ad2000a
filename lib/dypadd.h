// dypadd.h: growable pointer arrays, data arrays and string lists.
// Builds on: errexit.h, chkalloc.h, dystr.h, strutil.h.
#ifndef TOVAN_DYPADD_H
#define TOVAN_DYPADD_H

#include "attrs.h"
#include "dystr.h"

TOVAN_BEGIN_C

typedef struct dyp {
    int count;
    int marker;
    struct dyp *next;
    int capacity;
    void **array;
} dyp;

typedef struct dyd {
    int count;
    int marker;
    int element_size;
    struct dyd *next;
    int capacity;
    void *data;
} dyd;

typedef struct dl {
    struct dl *next;
    struct dl **back;
    dy text;
} dl;

void **dypnew(dyp *array, int capacity);
void **dypreuse(dyp *array);
void **dypadd(dyp *array, const void *pointer);
void **dypinsert(dyp *array, const void *pointer, int index);
void **dypdelete(dyp *array, int index);
void **dypseti(dyp *array, const void *pointer, int index);
void **dypsplit(dyp *array, char *text, int flags);
dyp *dypflist(dyp *array);
void *dydnew(dyd *array, int capacity, int element_size);
void *dydadd(dyd *array, const void *element);
void *dydreuse(dyd *array, int element_size);
dyd *dydflist(dyd *array, int element_size);
dl *dlalloc(void);
dl *dlfree(dl *node);
dl *dlflist(dl *node);
dl **dlinsert(dl **head, dl *node);
dl *dldelete(dl *node);

TOVAN_END_C

#endif
