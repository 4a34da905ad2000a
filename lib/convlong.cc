// convlong.cc: bytes of numbers in the other order.
#include "convert.h"

#include "ident.h"

uint32_t convlong(uint32_t value) {
    return __builtin_bswap32(value);
}

uint16_t convshrt(uint16_t value) {
    return __builtin_bswap16(value);
}

uint32_t *convmlong(uint32_t *values, int count) {
    for (int i = 0; i < count; i++)
        values[i] = convlong(values[i]);
    return values;
}

uint16_t *convmshrt(uint16_t *values, int count) {
    for (int i = 0; i < count; i++)
        values[i] = convshrt(values[i]);
    return values;
}

TOVAN_IDENT(convlong, "8.4", "26/11/21")
