// dystr.h: growable, always NUL-terminated strings (the dy record).
// Builds on: errexit.h, chkalloc.h, istype.h, strutil.h.
#ifndef TOVAN_DYSTR_H
#define TOVAN_DYSTR_H

#include "attrs.h"

#include <stdarg.h>

TOVAN_BEGIN_C

typedef struct dy {
    int length;
    int marker;
    struct dy *next;
    int capacity;
    char *buffer;
} dy;

dy *dynew(dy *string, int size);
dy *dyreuse(dy *string, int size);
char *dygrow(dy *string, int extra);
char *dystr(dy *string, const char *text);
char *dynstr(dy *string, const char *bytes, int n);
char *dyspan(dy *string, const char *start, const char *end);
int dyaddc(dy *string, int character);
char *dyaddslash(dy *string);
char *dyaddspace(dy *string);
char *dypadc(dy *string, int character, int column);
char *dytrim(dy *string);
char *dydiradd(dy *string, const char *component, int n);
char *dyinsert(dy *string, int position, const char *bytes, int n);
char *dycut(dy *string, char *from, char *to);
char *dytruncate(dy *string, int n);
char *dyfmt(dy *string, const char *format, ...);
char *dyvfmt(dy *string, const char *format, va_list arguments);
dy *dyalloc(void);
void dyfree(dy *string);
void dyalloc_sizes(int initial, int retain);
char *dycache(const char *bytes, int n);

TOVAN_END_C

#endif
