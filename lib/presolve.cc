// presolve.cc: paths made absolute.
#include "simplify.h"

#include "chkalloc.h"
#include "dystr.h"
#include "errexit.h"
#include "ident.h"

#include <unistd.h>

namespace {

constexpr size_t longest_directory = 4097;

}  // namespace

char *p_resolve(const char *path, const char *cwd) {
    char here[longest_directory];
    if (cwd == nullptr) {
        cwd = getcwd(here, sizeof here);
        if (cwd == nullptr) errexit("getcwd: %s", syserr());
    }
    if (*path == '/') return savestr(path);
    dy absolute;
    dynew(&absolute, 0);
    return dyfmt(&absolute, "@s/@s", cwd, path);
}

TOVAN_IDENT(presolve, "8.4", "26/11/21")
