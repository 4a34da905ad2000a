// mem_cpy.cc: areas of memory. Areas of no bytes may be anywhere, null
// included, which the system's functions do not allow.
#include "strutil.h"

#include "ident.h"

#include <string.h>

void *mem_chr(const void *area, int byte, size_t n) {
    if (n == 0) return nullptr;
    return const_cast<void *>(memchr(area, byte, n));
}

// Deliberate: no ordering, unequal is 1 both ways round (test
// mem_cmp_is_no_ordering).
int mem_cmp(const void *a, const void *b, size_t n) {
    return n != 0 && memcmp(a, b, n) != 0;
}

void *mem_cpy(void *destination, const void *source, size_t n) {
    return mem_move(destination, source, n);
}

void *mem_move(void *destination, const void *source, size_t n) {
    if (n == 0) return destination;
    return memmove(destination, source, n);
}

void *mem_set(void *area, int byte, size_t n) {
    if (n == 0) return area;
    return memset(area, byte, n);
}

void *mem_zero(void *area, size_t n) {
    if (area == nullptr) return area;
    return memset(area, 0, n);
}

uintptr_t wordalign(uintptr_t number) {
    return (number + 3) & ~static_cast<uintptr_t>(3);
}

TOVAN_IDENT(mem_cpy, "8.4", "26/11/21")
