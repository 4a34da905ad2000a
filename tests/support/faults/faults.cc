// faults.cc: system calls that fail, fall short or come late, on demand.
#include "support/faults/faults.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utime.h>

extern "C" void *__real_mmap(void *, size_t, int, int, int, off_t);

namespace {

bool *new_shared_flag() {
    void *page = __real_mmap(nullptr, sizeof(bool), PROT_READ | PROT_WRITE,
                             MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return static_cast<bool *>(page);
}

// Functions by name. No memory is asked for here: malloc is among them.
struct function {
    const char *name;
    support::fault fault;
    int calls;
};
function functions[64];

// Whether any call met a fault, in this process or in a child of with_fault().
bool *has_met = new_shared_flag();

function *find(const char *name) {
    function *f = functions;
    while (f->name != nullptr && strcmp(f->name, name) != 0)
        ++f;
    f->name = name;
    return f;
}

// The fault that this call meets, or null. Counts the call.
const support::fault *met(const char *name) {
    function *f = find(name);
    int nth = ++f->calls;
    const support::fault *fault = &f->fault;
    if (fault->call == nullptr || nth < fault->first) return nullptr;
    bool is_over =
        fault->times != support::always && nth >= fault->first + fault->times;
    if (is_over) return nullptr;
    *has_met = true;
    if (fault->before != nullptr) fault->before();
    return fault;
}

// Whether this call fails; errno is set then.
bool fails(const char *name) {
    const support::fault *fault = met(name);
    if (fault == nullptr || fault->error == 0) return false;
    errno = fault->error;
    return true;
}

void limit(const support::fault &fault, size_t *count) {
    size_t most = *count;
    if (fault.most == support::half) most = (*count + 1) / 2;
    if (fault.most >= 0) most = static_cast<size_t>(fault.most);
    if (*count > most) *count = most;
}

// The same for a call that transfers bytes, whose count may become smaller.
bool fails(const char *name, size_t *count) {
    const support::fault *fault = met(name);
    if (fault == nullptr) {
        const function *f = find(name);
        bool before = f->fault.error != 0 && f->calls < f->fault.first;
        if (before) limit(f->fault, count);
        return false;
    }
    errno = fault->error;
    if (fault->error != 0) return true;
    limit(*fault, count);
    return false;
}

// A stream whose reads go through the faults of "fread".
struct faulty_stream {
    int descriptor;
};

ssize_t read_stream(void *cookie, char *buffer, size_t size) {
    if (fails("fread", &size)) return -1;
    return ::read(static_cast<faulty_stream *>(cookie)->descriptor, buffer,
                  size);
}

int close_stream(void *cookie) {
    auto *stream = static_cast<faulty_stream *>(cookie);
    int result = ::close(stream->descriptor);
    delete stream;
    return result;
}

// The stream of a descriptor; one that reads through the faults while there
// is one.
FILE *stream_of(int descriptor, const char *mode,
                FILE *(*open_really)(int, const char *)) {
    if (*mode != 'r' || find("fread")->fault.call == nullptr)
        return open_really(descriptor, mode);
    return fopencookie(new faulty_stream{descriptor}, mode,
                       {read_stream, nullptr, nullptr, close_stream});
}

}  // namespace

// NAME with fixed arguments, failing with `failure`.
#define WRAP(result, failure, name, parameters, arguments) \
    WRAP_AS(#name, result, failure, name, parameters, arguments)

// The same, met by another name.
#define WRAP_AS(known, result, failure, name, parameters, arguments) \
    extern "C" result __real_##name parameters;                      \
    extern "C" result __wrap_##name parameters;                      \
    extern "C" result __wrap_##name parameters {                     \
        if (fails(known)) return failure;                            \
        return __real_##name arguments;                              \
    }

// The same for a call that transfers `count` bytes.
#define WRAP_TRANSFER(name, parameters, arguments)               \
    extern "C" ssize_t __real_##name parameters;                 \
    extern "C" ssize_t __wrap_##name parameters;                 \
    extern "C" ssize_t __wrap_##name parameters {                \
        bool asks = count > 0;                                   \
        if (fails(#name, &count)) return -1;                     \
        return asks && count == 0 ? 0 : __real_##name arguments; \
    }

WRAP_TRANSFER(read, (int fd, void *b, size_t count), (fd, b, count))
WRAP_TRANSFER(write, (int fd, const void *b, size_t count), (fd, b, count))
WRAP_TRANSFER(pread, (int fd, void *b, size_t count, off_t at),
              (fd, b, count, at))
WRAP_TRANSFER(pwrite, (int fd, const void *b, size_t count, off_t at),
              (fd, b, count, at))

WRAP(int, -1, creat, (const char *path, mode_t mode), (path, mode))
WRAP(off_t, -1, lseek, (int fd, off_t at, int whence), (fd, at, whence))
WRAP(int, -1, stat, (const char *path, struct stat *s), (path, s))
WRAP(int, -1, fstat, (int fd, struct stat *s), (fd, s))
WRAP(int, -1, lstat, (const char *path, struct stat *s), (path, s))
WRAP(int, -1, access, (const char *path, int mode), (path, mode))
WRAP(ssize_t, -1, readlink, (const char *path, char *b, size_t n), (path, b, n))
WRAP(int, -1, unlink, (const char *path), (path))
WRAP(int, -1, chmod, (const char *path, mode_t mode), (path, mode))
WRAP(int, -1, fchmod, (int fd, mode_t mode), (fd, mode))
WRAP(int, -1, ftruncate, (int fd, off_t size), (fd, size))
WRAP(int, -1, utime, (const char *path, const struct utimbuf *t), (path, t))
WRAP(DIR *, nullptr, opendir, (const char *path), (path))
WRAP(struct dirent *, nullptr, readdir, (DIR * d), (d))
WRAP(char *, nullptr, getcwd, (char *b, size_t n), (b, n))
WRAP(int, -1, pipe, (int *ends), (ends))
WRAP(int, -1, pipe2, (int *ends, int flags), (ends, flags))
WRAP(pid_t, -1, fork, (), ())
WRAP(int, -1, execv, (const char *path, char *const *argv), (path, argv))
WRAP(pid_t, -1, wait, (int *status), (status))
WRAP(pid_t, -1, waitpid, (pid_t pid, int *status, int flags),
     (pid, status, flags))
WRAP(int, -1, dup, (int fd), (fd))
WRAP(sighandler_t, SIG_ERR, signal, (int n, sighandler_t f), (n, f))
WRAP(int, -1, sigaction,
     (int n, const struct sigaction *a, struct sigaction *b), (n, a, b))
WRAP(void *, MAP_FAILED, mmap,
     (void *at, size_t n, int prot, int flags, int fd, off_t offset),
     (at, n, prot, flags, fd, offset))
WRAP(int, -1, setenv, (const char *name, const char *value, int replace),
     (name, value, replace))
WRAP(int, -1, gethostname, (char *b, size_t n), (b, n))
WRAP(int, -1, uname, (struct utsname * host), (host))
WRAP(struct passwd *, nullptr, getpwnam, (const char *name), (name))
WRAP(struct passwd *, nullptr, getpwuid, (uid_t uid), (uid))
WRAP(struct group *, nullptr, getgrgid, (gid_t gid), (gid))
WRAP(char *, nullptr, getlogin, (), ())
WRAP(void *, nullptr, malloc, (size_t n), (n))
WRAP_AS("malloc", void *, nullptr, calloc, (size_t count, size_t n), (count, n))
WRAP_AS("malloc", void *, nullptr, realloc, (void *block, size_t n), (block, n))

extern "C" {
int __real_open(const char *path, int flags, ...);
int __wrap_open(const char *path, int flags, ...);
int __wrap_open(const char *path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    mode_t mode = flags & O_CREAT ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return fails("open") ? -1 : __real_open(path, flags, mode);
}

// A descriptor is closed in any case.
int __real_close(int fd);
int __wrap_close(int fd);
int __wrap_close(int fd) {
    int result = __real_close(fd);
    return fails("close") ? -1 : result;
}

int __real_fcntl(int fd, int what, ...);
int __wrap_fcntl(int fd, int what, ...);
int __wrap_fcntl(int fd, int what, ...) {
    va_list rest;
    va_start(rest, what);
    void *argument = va_arg(rest, void *);
    va_end(rest);
    return fails("fcntl") ? -1 : __real_fcntl(fd, what, argument);
}

FILE *__real_fdopen(int fd, const char *mode);
FILE *__wrap_fdopen(int fd, const char *mode);
FILE *__wrap_fdopen(int fd, const char *mode) {
    if (fails("fdopen")) return nullptr;
    return stream_of(fd, mode, __real_fdopen);
}

FILE *__real_fopen(const char *path, const char *mode);
FILE *__wrap_fopen(const char *path, const char *mode);
FILE *__wrap_fopen(const char *path, const char *mode) {
    if (fails("fopen")) return nullptr;
    if (*mode != 'r' || find("fread")->fault.call == nullptr)
        return __real_fopen(path, mode);
    int fd = __real_open(path, O_RDONLY);
    return fd == -1 ? nullptr : stream_of(fd, mode, __real_fdopen);
}

// The child of vfork() would come back into this frame: the call must be the
// last thing that happens here.
pid_t __real_vfork();
pid_t __wrap_vfork();
__attribute__((optimize("O2"), no_sanitize_address)) pid_t __wrap_vfork() {
    if (fails("vfork")) return -1;
    return __real_vfork();
}
}

void support::inject(const fault &wanted) {
    function *f = find(wanted.call);
    f->fault = wanted;
    f->calls = 0;
}

void support::heal() {
    for (function &f : functions) {
        f.fault = {};
        f.calls = 0;
    }
}

int support::calls_of(const char *call) {
    return find(call)->calls;
}

namespace {

int open_descriptors() {
    int count = 0;
    for (int fd = 0; fd < 256; ++fd)
        count += __real_fcntl(fd, F_GETFD) != -1;
    return count;
}

}  // namespace

support::outcome support::with_fault(const fault &wanted,
                                     const std::function<void()> &body) {
    *has_met = false;
    return in_child([&] {
        int before = open_descriptors();
        inject(wanted);
        body();
        heal();
        int more = open_descriptors() - before;
        if (more != 0) printf("(descriptors: %d more)", more);
    });
}

bool support::was_met() {
    return *has_met;
}

void support::check_faults(const std::function<void()> &body,
                           const std::vector<fault_row> &rows,
                           const std::function<void(outcome *)> &adjust) {
    for (const fault_row &row : rows) {
        outcome end = with_fault(row.what, body);
        if (adjust != nullptr) adjust(&end);
        std::string name = name_of(row.what);
        bool has_fault = row.what.error != 0 || row.what.most != -1;
        EXPECT_EQ(*has_met, has_fault) << name << ": no such call";
        EXPECT_EQ(end.out, row.out) << name;
        EXPECT_EQ(end.err, row.err) << name;
        EXPECT_EQ(end.exit_status, row.status) << name;
        EXPECT_EQ(end.signal, 0) << name;
    }
}

std::string support::name_of(const fault &f) {
    std::string name = std::string(f.call) + ": ";
    if (f.error != 0) name += strerrorname_np(f.error);
    if (f.most == half) name += "half";
    if (f.most >= 0) name += std::to_string(f.most) + " bytes";
    name += ", calls from " + std::to_string(f.first) + " on";
    return f.times == always ? name : name + ": " + std::to_string(f.times);
}

std::string support::text_of(int error) {
    return strerror(error);
}
