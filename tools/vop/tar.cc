// tar.cc: files into a tar archive.
#include "vop/pack.h"
#include "vop/vop.h"

#include <errno.h>
#include <string.h>
#include <tovan/errexit.h>
#include <tovan/tarout.h>

namespace {

constexpr const char *explanation[] = {
    "Packs files into a tar archive, for any tar to read.",
    VOP_PACK_FLAGS,
    "",
    "Names have up to 99 characters, files up to 8 GB. A file with several",
    "names is stored once. Sockets, pipes and devices are left out.",
    "",
    "Example: vop tar -C /usr/share doc | tar -tvf -",
    nullptr,
};

constexpr size_t longest_name = 99;
constexpr time_t first_late_time = time_t{1} << 33;

void start(const vop::pack_wishes *wishes) {
    tarinit(wishes->uid, wishes->gid);
}

bool fits(const char *path, const struct stat *status) {
    return strlen(path) <= longest_name && status->st_mtime >= 0 &&
           status->st_mtime < first_late_time;
}

// tarout() gives links the size of their target, and there are readers that
// look for as much content behind it.
void put_link(const char *path, const struct stat *status) {
    const char *target = fits(path, status) ? tarlnname(path, status) : nullptr;
    if (target == nullptr) return tarout(path, nullptr, status);
    tarheader(path, 0, status, 0, target);
    errno = 0;
}

void put(const char *path, const struct stat *status) {
    mode_t mode = status->st_mode;
    if (S_ISLNK(mode)) return put_link(path, status);
    if (S_ISREG(mode) || S_ISDIR(mode)) return tarout(path, nullptr, status);
    eprintf("%s: %s: neither file nor directory nor link, left out\n", progname,
            path);
    errno = EINVAL;
}

int run(char **arguments) {
    constexpr vop::archive_format format{start, put, tardone};
    return vop::pack(arguments, &format);
}

}  // namespace

constinit const vop::command vop::tar = {"tar", "tar" VOP_PACK_SYNOPSIS,
                                         explanation, ::run};
