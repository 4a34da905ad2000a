// attrs.h: what every public header starts with: C linkage and what the
// compiler can check about a function.
#ifndef TOVAN_ATTRS_H
#define TOVAN_ATTRS_H

#ifdef __cplusplus
#define TOVAN_BEGIN_C extern "C" {
#define TOVAN_END_C }
#define TOVAN_NORETURN [[noreturn]]
#else
#define TOVAN_BEGIN_C
#define TOVAN_END_C
#define TOVAN_NORETURN _Noreturn
#endif

#define TOVAN_PRINTF(text, first) \
    __attribute__((__format__(__printf__, text, first)))

#endif
