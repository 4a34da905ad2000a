// openread.cc: text files of the installation as streams.
#include "private_openread.h"

#include "ident.h"
#include "private_io.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

FILE *tovan::open_for_reading(const char *path) {
    int descriptor = open_file(path, O_RDONLY);
    if (descriptor == -1) return nullptr;
    FILE *stream = fdopen(descriptor, "r");
    if (stream != nullptr) return stream;
    int reason = errno;
    close(descriptor);
    errno = reason;
    return nullptr;
}

TOVAN_IDENT(openread, "8.4", "26/11/21")
