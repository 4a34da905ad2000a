// lvpipe_test.cc: a running kivs and its pipe.
#include "support/child.h"
#include "support/program.h"
#include "support/tree.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <tovan/errexit.h>
#include <tovan/lvget.h>
#include <unistd.h>

namespace {

void install_kivs(const std::string &script) {
    support::install_program("kivs", script);
}

std::string all_of(int descriptor) {
    std::string all;
    char buffer[512];
    for (ssize_t n; (n = read(descriptor, buffer, sizeof buffer)) > 0;)
        all.append(buffer, static_cast<size_t>(n));
    close(descriptor);
    return all;
}

std::string output_of_pipe(int r, const char *d, const char *c,
                           int *status = nullptr) {
    pid_t pid = 0;
    int descriptor = lvpipe(r, d, &pid, c);
    std::string output = all_of(descriptor);
    EXPECT_GT(pid, 0);
    EXPECT_EQ(waitpid(pid, status, 0), pid);
    return output;
}

TEST(lvpipe, the_command_has_its_options_in_order) {
    install_kivs("for word in \"$@\"; do echo \"<$word>\"; done\n");
    const struct {
        int r;
        const char *d;
        const char *c;
        std::string words;
    } rows[] = {
        {0, nullptr, nullptr, "<-p>\n"},
        {1, nullptr, nullptr, "<-p>\n<-r>\n"},
        {0, "dir", nullptr, "<-p>\n<-ddir>\n"},
        {0, nullptr, "conf", "<-p>\n<-cconf>\n"},
        {1, "dir", "conf", "<-p>\n<-r>\n<-cconf>\n<-ddir>\n"},
        {0, "", "", "<-p>\n<-c>\n<-d>\n"},
        {0, "'a b'", nullptr, "<-p>\n<-da b>\n"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(output_of_pipe(row.r, row.d, row.c), row.words);
}

TEST(lvpipe, kivs_reads_nothing_and_is_the_process_itself) {
    install_kivs("cat; echo end of input; echo $$ >pid\n");
    pid_t pid = 0;
    support::outcome end = support::in_child(
        [&pid] {
            printf("%s", all_of(lvpipe(0, nullptr, &pid, nullptr)).c_str());
            printf("%d", static_cast<int>(pid));
        },
        "input of the caller");
    EXPECT_EQ(end.out, "end of input\n" +
                           std::to_string(stoi(support::read_file("pid"))));
}

TEST(lvpipe, the_status_is_that_of_kivs) {
    install_kivs("exit 9\n");
    int status = 0;
    EXPECT_EQ(output_of_pipe(0, nullptr, nullptr, &status), "");
    EXPECT_EQ(WEXITSTATUS(status), 9);
}

TEST(lvpipe, the_read_end_is_closed_on_exec_and_above_2) {
    install_kivs("exit 0\n");
    pid_t pid = 0;
    int descriptor = lvpipe(0, nullptr, &pid, nullptr);
    EXPECT_GT(descriptor, 2);
    EXPECT_EQ(fcntl(descriptor, F_GETFD), FD_CLOEXEC);
    all_of(descriptor);
    waitpid(pid, nullptr, 0);
}

TEST(lvpipe, buffered_output_is_written_once) {
    install_kivs("exit 0\n");
    support::outcome end = support::in_child([] {
        printf("out ");
        fprintf(stderr, "err ");
        output_of_pipe(0, nullptr, nullptr);
        printf("again");
    });
    EXPECT_EQ(end.out, "out again");
    EXPECT_EQ(end.err, "err ");
}

TEST(lvpipe, a_child_that_fails_runs_the_hook_but_no_exit_handlers) {
    setenv("PATH", "/nowhere", 1);
    support::outcome end = support::in_child([] {
        atexit([] { fputs("handler\n", stderr); });
        set_exit_rtn([](int status) { fprintf(stderr, "hook %d\n", status); });
        int status = 0;
        output_of_pipe(0, nullptr, nullptr, &status);
        _exit(WEXITSTATUS(status));
    });
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err, "test: kivs: not found\nhook -1\n");
}

TEST(lvpipe, too_many_open_files_are_reported) {
    support::outcome end = support::in_child([] {
        rlimit limit = {3, 3};
        setrlimit(RLIMIT_NOFILE, &limit);
        pid_t pid = 0;
        lvpipe(0, nullptr, &pid, nullptr);
    });
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err,
              "test: pipes(2): " + std::string(strerror(EMFILE)) + "\n");
}

int failing_fork = 0;      // the errno of fork()
int failing_dev_null = 0;  // the errno of opening /dev/null

TEST(lvpipe, a_failed_fork_is_reported) {
    support::outcome end = support::in_child([] {
        failing_fork = EAGAIN;
        pid_t pid = 0;
        lvpipe(0, nullptr, &pid, nullptr);
    });
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err, "test: fork(2) (for kivs): " +
                           std::string(strerror(EAGAIN)) + "\n");
}

TEST(lvpipe, a_child_without_dev_null_ends) {
    install_kivs("echo started\n");
    int status = 0;
    support::outcome end = support::in_child([&status] {
        failing_dev_null = ENXIO;
        EXPECT_EQ(output_of_pipe(0, nullptr, nullptr, &status), "");
        _exit(WEXITSTATUS(status));
    });
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err,
              "test: /dev/null: " + std::string(strerror(ENXIO)) + "\n");
}

}  // namespace

// The C library's, failing on demand.
extern "C" pid_t fork() noexcept {
    if (failing_fork != 0) {
        errno = failing_fork;
        return -1;
    }
    using real_fork = pid_t (*)();
    return reinterpret_cast<real_fork>(dlsym(RTLD_NEXT, "fork"))();
}

extern "C" int open(const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (failing_dev_null != 0 && strcmp(path, "/dev/null") == 0) {
        errno = failing_dev_null;
        return -1;
    }
    return openat(AT_FDCWD, path, flags, mode);
}
