// issymlnk.cc: symbolic links.
#include "opentmp.h"

#include "ident.h"

int issymlink(const char *path) {
    struct stat status;
    return lstat(path, &status) == 0 && S_ISLNK(status.st_mode);
}

int gotsymlinks(void) {
    return 1;
}

TOVAN_IDENT(issymlnk, "8.4", "26/11/21")
