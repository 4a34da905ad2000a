// istype.h: character classes and printable forms.
// Builds on: errexit.h.
#ifndef TOVAN_ISTYPE_H
#define TOVAN_ISTYPE_H

#include "attrs.h"

TOVAN_BEGIN_C

extern unsigned short _istype[256];
extern const char *const rep_char[256];
void applistype(const char *characters);
const char *frogtostr(int code);
int strtofrog(const char *mnemonic);

TOVAN_END_C

#endif
