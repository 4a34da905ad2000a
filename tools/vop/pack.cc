// pack.cc: files into an archive of any format.
#include "vop/pack.h"

#include "shared/options.h"
#include "shared/progress.h"
#include "vop/walk.h"

#include <errno.h>
#include <grp.h>
#include <limits.h>
#include <pwd.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <tovan/chkalloc.h>
#include <tovan/dystr.h>
#include <tovan/errexit.h>
#include <tovan/usage.h>
#include <unistd.h>

namespace {

constexpr tools::long_flag long_flags[] = {
    {"--owner", 'o', true}, {"--now", 't'}, {nullptr, 0}};

constexpr int incomplete = 1;  // statuses
constexpr int not_written = 255;

// The archive at work: walks hand their visitor nothing of the caller's.
// Filled by run of pack().
struct packing {
    const vop::archive_format *format;
    vop::pack_wishes wishes;
    bool goes_down;
    bool is_verbose;
    char separator;  // of paths on standard input
    time_t now;
    struct stat archive;  // standard output
    int status;
    int visited;  // since the last path was given
    dy folder;    // that path with a slash, when it was a directory, or empty
};
constinit packing current{};

// A number, or what `find` makes of a name.
template <typename Find>
int number_of(const char *text, const char *what, Find find) {
    char *end;
    unsigned long number = strtoul(text, &end, 10);
    bool is_number = *text >= '0' && *text <= '9' && *end == '\0';
    if (is_number && number <= INT_MAX) return static_cast<int>(number);
    int found = is_number ? -1 : find(text);
    if (found == -1) usage("--owner: no %s %s", what, text);
    return found;
}

int user_of(const char *name) {
    const passwd *user = getpwnam(name);
    return user != nullptr ? static_cast<int>(user->pw_uid) : -1;
}

int group_of(const char *name) {
    const group *found = getgrnam(name);
    return found != nullptr ? static_cast<int>(found->gr_gid) : -1;
}

void set_owner(const char *text) {
    char *user = savestr(text);
    char *group = strchr(user, ':');
    if (group != nullptr) *group++ = '\0';
    if (*user != '\0') current.wishes.uid = number_of(user, "user", user_of);
    if (group != nullptr && *group != '\0')
        current.wishes.gid = number_of(group, "group", group_of);
    free(user);
}

void change_folder(const char *folder) {
    errcheck(chdir(folder), folder);
}

char **take_flags(char **arguments) {
    tools::options flags = tools::options_of(arguments);
    while (int flag = tools::next_flag(&flags, "C:nv0", long_flags)) {
        if (flag == 'C') change_folder(flags.value);
        if (flag == 'n') current.goes_down = false;
        if (flag == 'v') current.is_verbose = true;
        if (flag == '0') current.separator = '\0';
        if (flag == 'o') set_owner(flags.value);
        if (flag == 't') current.wishes.is_now = true;
    }
    return flags.next;
}

bool is_archive(const struct stat *status) {
    return S_ISREG(status->st_mode) &&
           status->st_ino == current.archive.st_ino &&
           status->st_dev == current.archive.st_dev;
}

struct stat as_wished(const struct stat *status) {
    struct stat wished = *status;
    const vop::pack_wishes *wishes = &current.wishes;
    if (wishes->uid != -1) wished.st_uid = static_cast<uid_t>(wishes->uid);
    if (wishes->gid != -1) wished.st_gid = static_cast<gid_t>(wishes->gid);
    if (wishes->is_now) wished.st_mtime = current.now;
    return wished;
}

void remember_folder(const char *path) {
    dytruncate(&current.folder, 0);
    dystr(&current.folder, path);
    dyaddslash(&current.folder);
}

void visit(const char *path, const struct stat *status) {
    bool is_given = current.visited++ == 0;
    if (is_given && current.goes_down && S_ISDIR(status->st_mode))
        remember_folder(path);
    if (is_archive(status)) {
        eprintf("%s: %s: is the archive, left out\n", progname, path);
        return;
    }
    if (current.is_verbose) eprintf("%s\n", path);
    tools::note_progress(path, S_ISREG(status->st_mode) ? status->st_size : 0);
    struct stat wished = as_wished(status);
    current.format->put(path, &wished);
    if (errno != 0) current.status = incomplete;
}

void pack_path(const char *path) {
    current.visited = 0;
    if (!vop::walk(path, current.goes_down, visit)) current.status = incomplete;
}

// Whether the directory that was given before has brought the path along, as
// in the output of find(1).
bool is_packed(const char *path) {
    auto length = static_cast<size_t>(current.folder.length);
    return length > 0 && strncmp(path, current.folder.buffer, length) == 0;
}

void pack_lines() {
    char *line = nullptr;
    size_t size = 0;
    ssize_t length;
    while ((length = getdelim(&line, &size, current.separator, stdin)) > 0) {
        if (line[length - 1] == current.separator) line[length - 1] = '\0';
        if (*line != '\0' && !is_packed(line)) pack_path(line);
    }
    if (ferror(stdin)) {
        eprintf("%s: standard input: %s\n", progname, syserr());
        current.status = incomplete;
    }
    free(line);
}

void refuse_terminals(bool reads_paths) {
    if (reads_paths && isatty(STDIN_FILENO) == 1) usage("no path given");
    if (isatty(STDOUT_FILENO) == 1)
        errexit(
            "standard output is a terminal: the archive needs a file or "
            "a pipe");
}

}  // namespace

int vop::pack(char **arguments, const archive_format *format) {
    current.format = format;
    current.wishes = {-1, -1, false};
    current.goes_down = true;
    current.separator = '\n';
    dynew(&current.folder, 256);
    char **paths = take_flags(arguments);
    refuse_terminals(*paths == nullptr);
    // A closed pipe is a write error like others.
    signal(SIGPIPE, SIG_IGN);
    current.now = time(nullptr);
    fstat(STDOUT_FILENO, &current.archive);
    if (!current.is_verbose) tools::start_progress();
    format->start(&current.wishes);
    if (*paths == nullptr) pack_lines();
    for (; *paths != nullptr; paths++)
        pack_path(*paths);
    format->finish();
    int status = errno != 0 ? not_written : current.status;
    tools::end_progress();
    return status;
}
