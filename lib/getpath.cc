// getpath.cc: the search path and its candidates.
#include "execstr.h"

#include "chkalloc.h"
#include "ident.h"
#include "private_execstr.h"

#include <stdlib.h>
#include <string.h>

namespace {

constexpr char default_path[] = "/bin:/usr/bin:/usr/X11R6/bin";

// Filled by the first getpath(), with a copy: the environment's own text goes
// when it is set again. Holds for the process; never released.
constinit const char *kept_path = nullptr;

}  // namespace

const char *tovan::path_in_force() {
    if (kept_path != nullptr) return kept_path;
    const char *path = getenv("PATH");
    return path != nullptr ? path : default_path;
}

const char *getpath(void) {
    if (kept_path == nullptr) kept_path = savestr(tovan::path_in_force());
    return kept_path;
}

const char *tryfile(const char *path, const char *name, dy *candidate) {
    const char *end = path + strcspn(path, ":");
    dyreuse(candidate, 1);
    dyspan(candidate, path, end);
    if (end != path) dyaddc(candidate, '/');
    dystr(candidate, name);
    return *end == ':' ? end + 1 : nullptr;
}

TOVAN_IDENT(getpath, "8.4", "26/11/21")
