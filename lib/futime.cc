// futime.cc: the times of a file.
#include "opentmp.h"

#include "ident.h"

#include <utime.h>

int futime(const char *path, time_t accessed, time_t modified) {
    struct utimbuf times = {};
    times.actime = accessed;
    times.modtime = modified;
    return utime(path, &times);
}

TOVAN_IDENT(futime, "8.4", "26/11/22")
