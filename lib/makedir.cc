// makedir.cc: directories by command.
#include "opentmp.h"

#include "errexit.h"
#include "execstr.h"
#include "ident.h"
#include "trait.h"

#include <errno.h>

namespace {

constexpr mode_t permission_bits = 0777;

// Whether the system call makes directories. Deliberate: the command does,
// so that a site can put its own in place (test the_trait_names_the_program).
constexpr bool got_mkdir = false;

// The mkdir program. Filled by the first directory made; for the process.
constinit const char *mkdir_program = nullptr;

[[noreturn]] void fake_mkdir() {
    errexit("Logic error - fake_mkdir invoked in -ltovan(makedir)");
}

// Whether it worked is seen by looking for the directory.
void make(const char *path) {
    if (got_mkdir) fake_mkdir();
    if (mkdir_program == nullptr) {
        mkdir_program = trait_str("_T_mkdir", "mkdir", 0);
    }
    char *argv[] = {nullptr, const_cast<char *>(mkdir_program),
                    const_cast<char *>(path), nullptr};
    forkcmmd(0, 1, 2, argv + 1);
}

int ensure(const char *path, mode_t permissions, struct stat *status) {
    if (stat(path, status) == -1) {
        make(path);
        if (stat(path, status) == -1) return -1;
    }
    if (!S_ISDIR(status->st_mode)) return fakesyserr(ENOTDIR);
    if ((status->st_mode & permission_bits) != permissions) {
        chmod(path, permissions);
    }
    return 0;
}

}  // namespace

int makedir(const char *path, int mode, int keep_umask, struct stat *status) {
    mode_t permissions = static_cast<mode_t>(mode) & permission_bits;
    mode_t mask = umask(0);
    if (keep_umask == 0) {
        umask(mask);
        permissions &= ~mask;
    }
    int result = ensure(path, permissions, status);
    umask(mask);
    return result;
}

TOVAN_IDENT(makedir, "8.4", "26/11/21")
