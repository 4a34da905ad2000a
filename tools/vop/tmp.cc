// tmp.cc: temporary files and directories.
#include "vop/vop.h"

#include "shared/options.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <tovan/errexit.h>
#include <tovan/opentmp.h>
#include <tovan/private_opentmp.h>
#include <tovan/usage.h>

namespace {

constexpr const char *explanation[] = {
    "Makes a new, empty file with a name of its own, and writes that name.",
    "Six characters that make the name unique stand before the first `.' of",
    "the model, or at its end: x.c becomes x12345a.c. Without a model it is",
    "tmp.",
    "",
    "-d\t\tmake a directory instead of a file",
    "-p DIR\t\tin DIR instead of TMPDIR or /tmp",
    "-m MODE\t\twith exactly these permissions, in octal; without -m 600, or",
    "\t\t700 for a directory, less what the umask forbids",
    "",
    "Example: vop tmp -p . build.log",
    nullptr,
};

constexpr int file_mode = 0600;
constexpr int directory_mode = 0700;
constexpr long permission_bits = 0777;

struct request {
    const char *directory;  // null: TMPDIR or /tmp
    const char *model;
    int mode;
    bool is_directory;
};

int mode_of(const char *text) {
    char *end;
    long mode = strtol(text, &end, 8);
    bool is_number = strspn(text, "01234567") == strlen(text) && *text != '\0';
    if (!is_number || mode > permission_bits)
        usage("-m %s: not the permissions of a file in octal", text);
    return static_cast<int>(mode);
}

// As opentmp(), with names that are hard to foresee.
char *make_directory(const char *directory, const char *model, int mode) {
    char *base;
    char *path = tovan::model_path(directory, model, &base);
    int result;
    do {
        tovan::put_random_base(base);
        result = mkdir(path, static_cast<mode_t>(mode));
    } while (result == -1 && errno == EEXIST);
    errcheck(result, path);
    return path;
}

char *make_entry(const request *wanted) {
    return wanted->is_directory
               ? make_directory(wanted->directory, wanted->model, wanted->mode)
               : opentmp(wanted->directory, wanted->model, wanted->mode,
                         nullptr);
}

request request_of(char **arguments) {
    request wanted{nullptr, "tmp", -1, false};
    tools::options flags = tools::options_of(arguments);
    while (int flag = tools::next_flag(&flags, "dp:m:", nullptr)) {
        if (flag == 'd') wanted.is_directory = true;
        if (flag == 'p') wanted.directory = flags.value;
        if (flag == 'm') wanted.mode = mode_of(flags.value);
    }
    if (*flags.next == nullptr) return wanted;
    wanted.model = flags.next[0];
    if (flags.next[1] != nullptr) usage("more than one model");
    if (strchr(wanted.model, '/') != nullptr)
        usage("%s: a model has no slash (-p names the directory)",
              wanted.model);
    return wanted;
}

int run(char **arguments) {
    request wanted = request_of(arguments);
    if (wanted.mode != -1)
        umask(0);
    else
        wanted.mode = wanted.is_directory ? directory_mode : file_mode;
    char *path = make_entry(&wanted);
    puts(path);
    free(path);
    return 0;
}

}  // namespace

constinit const vop::command vop::tmp = {
    "tmp", "tmp [-d] [-p DIR] [-m MODE] [MODEL]", explanation, ::run};
