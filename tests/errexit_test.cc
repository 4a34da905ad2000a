// errexit_test.cc: error reporting and exit.
#include "support/child.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <tovan/errexit.h>
#include <unistd.h>

namespace {

std::string system_text(int number) {
    return strerror(number);
}

TEST(errexit, writes_the_program_name_and_ends_with_255) {
    EXPECT_FATAL(errexit("no %s in %d", "file", 3), 255,
                 "test: no file in 3\n");
}

TEST(errexit, leaves_the_prefix_out_without_a_progname) {
    progname = nullptr;
    EXPECT_FATAL(errexit("x"), 255, "x\n");
}

TEST(errorexit, ends_with_the_given_status) {
    EXPECT_FATAL(errorexit(7, "seven"), 7, "test: seven\n");
}

TEST(error, adds_a_newline_and_no_name) {
    int result = -1;
    EXPECT_EQ(support::stderr_of([&] { result = error("a%d", 1); }), "a1\n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(support::stderr_of([] { tovan_error("b"); }), "b\n");
}

TEST(eprintf, adds_nothing) {
    int result = -1;
    EXPECT_EQ(support::stderr_of([&] { result = eprintf("a%d", 1); }), "a1");
    EXPECT_EQ(result, 0);
}

// A stream that buffers has something to flush, and fails then.
TEST(error, gives_what_the_flush_gives) {
    support::outcome end = support::in_child([] {
        static char buffer[BUFSIZ];
        setvbuf(stderr, buffer, _IOFBF, sizeof buffer);
        close(2);
        int results[] = {error("x"), tovan_error("x"), eprintf("x")};
        for (int result : results)
            printf("%d\n", result == EOF && errno == EBADF);
    });
    EXPECT_EQ(end.out, "1\n1\n1\n");
    EXPECT_EQ(end.exit_status, 0);
}

TEST(errmsg, one_text_is_shipped) {
    EXPECT_EQ(app_nerr, 1);
    EXPECT_STREQ(app_errlist[0], "usually suppressed");
}

TEST(errmsg, errmsg_rows) {
    const struct {
        int number;
        std::string text;
    } rows[] = {
        {-1, "usually suppressed"},         {-2, "Unknown error"},
        {-32768, "Unknown error"},          {0, system_text(0)},
        {ENOENT, system_text(ENOENT)},      {32767, "Unknown error"},
        {32766, system_text(32766)},        {2147483647, "Unknown error"},
        {-2147483647 - 1, "Unknown error"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(errmsg(row.number), row.text);
}

TEST(errmsg, an_assigned_table_is_used_and_its_null_has_a_text) {
    static const char *const own[] = {"first", nullptr, "third"};
    app_errlist = own;
    app_nerr = 3;
    EXPECT_STREQ(errmsg(-1), "first");
    EXPECT_STREQ(errmsg(-2), "The NULL error message");
    EXPECT_STREQ(errmsg(-3), "third");
    EXPECT_STREQ(errmsg(-4), "Unknown error");
}

TEST(fakesyserr, sets_errno_and_gives_minus_one) {
    EXPECT_EQ(fakesyserr(-1), -1);
    EXPECT_EQ(errno, -1);
    EXPECT_STREQ(syserr(), "usually suppressed");
    EXPECT_EQ(fakesyserr(ENOENT), -1);
    EXPECT_EQ(syserr(), system_text(ENOENT));
}

TEST(errcheck, passes_results_and_ends_on_minus_one) {
    EXPECT_EQ(support::stderr_of([] { EXPECT_EQ(errcheck(0, "open"), 0); }),
              "");
    EXPECT_EQ(errcheck(5, "open"), 5);
    EXPECT_FATAL(errno = ENOENT; errcheck(-1, "open"), 255,
                                 "test: open: " + system_text(ENOENT) + "\n");
}

TEST(ferrcheck, passes_pointers_and_ends_on_null) {
    int target = 0;
    EXPECT_EQ(ferrcheck(&target, "fopen"), &target);
    EXPECT_FATAL(errno = EACCES; ferrcheck(nullptr, "x"), 255,
                                 "test: x: " + system_text(EACCES) + "\n");
}

void show_status(int status) {
    fprintf(stderr, "hook %d\n", status);
}

TEST(lclexit, hook_sees_the_status_before_the_end) {
    EXPECT_EQ(set_exit_rtn(show_status), 0);
    EXPECT_FATAL(errexit("x"), 255, "test: x\nhook -1\n");
    EXPECT_FATAL(lclexit(3), 3, "hook 3\n");
}

TEST(lclexit, a_removed_hook_is_not_called) {
    set_exit_rtn(show_status);
    EXPECT_EQ(set_exit_rtn(nullptr), 0);
    EXPECT_FATAL(lclexit(4), 4, "");
}

TEST(lclexit, runs_exit_handlers) {
    EXPECT_FATAL(atexit([] { fputs("handler\n", stderr); });
                 lclexit(0), 0, "handler\n");
}

TEST(nocore, writes_raw_and_aborts_without_the_hook) {
    set_exit_rtn(show_status);
    support::outcome end = support::in_child([] { nocore(); });
    EXPECT_EQ(end.signal, SIGABRT);
    EXPECT_EQ(end.err, "test: Ran out of memory\n");
}

TEST(newexport, sets_replaces_and_removes) {
    EXPECT_EQ(newexport("TOVAN_X", "1"), 0);
    EXPECT_EQ(newexport("TOVAN_X", "2"), 0);
    EXPECT_STREQ(getenv("TOVAN_X"), "2");
    EXPECT_EQ(newexport("TOVAN_X", nullptr), 0);
    EXPECT_EQ(getenv("TOVAN_X"), nullptr);
    EXPECT_EQ(newexport("A=B", "2"), -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST(zombie, reaps_without_blocking) {
    int status = 0;
    EXPECT_EQ(zombie(&status), -1);
    EXPECT_EQ(errno, ECHILD);
    int gate[2];
    ASSERT_EQ(pipe(gate), 0);
    pid_t child = fork();
    if (child == 0) {
        char byte;
        [[maybe_unused]] ssize_t n = read(gate[0], &byte, 1);
        _exit(9);
    }
    EXPECT_EQ(zombie(&status), 0);
    ASSERT_EQ(write(gate[1], "x", 1), 1);
    siginfo_t info;
    waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT);
    EXPECT_EQ(zombie(&status), child);
    EXPECT_EQ(WEXITSTATUS(status), 9);
}

TEST(sanemode, gives_zero) {
    EXPECT_EQ(sanemode(), 0);
    fakeuse();
}

}  // namespace
