// convert.h: numbers, identifiers and calendar.
// Builds on: errexit.h, istype.h.
#ifndef TOVAN_CONVERT_H
#define TOVAN_CONVERT_H

#include "attrs.h"

#include <stdint.h>
#include <time.h>

TOVAN_BEGIN_C

extern const char *const monthnms[12];
extern const char *const daynms[7];
extern const short monlimits[2][13];

int atoin(const char *text, int n);
long atoln(const char *text, int n);
char *itoa(int value, char *buffer, int radix);
uint32_t convlong(uint32_t value);
uint16_t convshrt(uint16_t value);
uint32_t *convmlong(uint32_t *values, int count);
uint16_t *convmshrt(uint16_t *values, int count);
uint32_t r64tol(const char *text, const char **end);
char *ltor64(uint32_t value);
void r64_init(void);
char *uniqid(void);
void stuffnum(char *buffer, uint32_t value, int width);
time_t emitlacol(const struct tm *local);

TOVAN_END_C

#endif
