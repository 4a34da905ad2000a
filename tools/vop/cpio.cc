// cpio.cc: files into a cpio archive.
#include "vop/pack.h"
#include "vop/vop.h"

#include <errno.h>
#include <limits.h>
#include <string.h>
#include <tovan/cpioput.h>
#include <tovan/errexit.h>
#include <tovan/opentmp.h>
#include <unistd.h>

namespace {

constexpr const char *explanation[] = {
    "Packs files into a cpio archive of the portable ASCII format (odc).",
    VOP_PACK_FLAGS,
    "",
    "Names have up to 257 characters, files up to 4 GB. A file with several",
    "names is stored under each, and readers link them. Sockets are left out.",
    "",
    "Example: vop cpio src | cpio -itv",
    nullptr,
};

// The end of every archive: a file of that name would be taken for it.
constexpr char reserved_name[] = "TRAILER!!!";
constexpr char harmless_name[] = "././TRAILER!!!";

// The file that holds the target of a symbolic link for cpioput(). Made for
// the first link, removed when the tool ends.
struct target_file {
    char *path;
    int descriptor;
};
constinit target_file target{};

void remove_target(int) {
    if (target.path != nullptr) unlink(target.path);
}

void start(const vop::pack_wishes *wishes) {
    cpiosetup(wishes->is_now);
}

void make_target() {
    set_exit_rtn(remove_target);
    target.path = opentmp(nullptr, progname, 0600, &target.descriptor);
}

// Reports what went wrong; errno is that.
void refuse(const char *path) {
    int reason = errno;
    eprintf("%s: %s: %s\n", progname, path, syserr());
    errno = reason;
}

void put_link(const char *path, const struct stat *status) {
    char text[PATH_MAX];
    ssize_t length = readlink(path, text, sizeof text);
    if (length == -1) return refuse(path);
    if (target.path == nullptr) make_target();
    auto size = static_cast<size_t>(length);
    if (pwrite(target.descriptor, text, size, 0) != length ||
        ftruncate(target.descriptor, length) == -1)
        return refuse(target.path);
    cpioput(target.path, path, status);
}

void put(const char *path, const struct stat *status) {
    if (S_ISLNK(status->st_mode)) return put_link(path, status);
    const char *name = strncmp(path, "./", 2) == 0 ? path + 2 : path;
    bool is_reserved = strcmp(name, reserved_name) == 0;
    cpioput(path, is_reserved ? harmless_name : path, status);
}

int run(char **arguments) {
    constexpr vop::archive_format format{start, put, cpiofin};
    return vop::pack(arguments, &format);
}

}  // namespace

constinit const vop::command vop::cpio = {"cpio", "cpio" VOP_PACK_SYNOPSIS,
                                          explanation, ::run};
