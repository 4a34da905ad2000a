// stdfids_test.cc: three descriptors in their places.
#include "support/child.h"
#include "support/tree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <tovan/errexit.h>
#include <tovan/execstr.h>
#include <unistd.h>
#include <set>

namespace {

// Files kept open at high numbers; each has an inode of its own.
constexpr int first_file = 200;
constexpr int file_count = 6;
// The numbers that take part: 0, 1, 2 and three above.
constexpr int first_above = 3;

void open_files() {
    for (int i = 0; i < file_count; i++) {
        std::string name = "file" + std::to_string(i);
        int descriptor = open(name.c_str(), O_RDWR | O_CREAT, 0600);
        fcntl(descriptor, F_DUPFD, first_file + i);
        close(descriptor);
    }
}

// Number n stands for file n; those of 0, 1, 2 in the mask are closed.
void arrange(int closed_mask) {
    for (int n = 0; n < 20; n++)
        close(n);
    for (int n = 0; n < file_count; n++) {
        bool is_closed = n <= 2 && (closed_mask >> n & 1) != 0;
        if (!is_closed) dup2(first_file + n, n);
    }
}

bool is_file(int descriptor, int number) {
    struct stat one;
    struct stat other;
    if (fstat(descriptor, &one) == -1) return false;
    fstat(first_file + number, &other);
    return one.st_ino == other.st_ino;
}

// What is wrong after setstdfids(); empty when all is well.
std::string fault(int in, int out, int err) {
    if (!is_file(0, in)) return "0 is wrong";
    if (!is_file(1, out)) return "1 is wrong";
    if (!is_file(2, err)) return "2 is wrong";
    std::set<int> given{in, out, err};
    for (int n = first_above; n < 20; n++) {
        bool is_open = fcntl(n, F_GETFD) != -1;
        bool expected = n < file_count && given.count(n) == 0;
        if (is_open != expected) {
            return std::to_string(n) + (is_open ? " is open" : " is closed");
        }
    }
    return "";
}

bool is_closed(int closed_mask, int n) {
    return n <= 2 && (closed_mask >> n & 1) != 0;
}

// Every arrangement that is open to begin with; faults go to `report`.
int try_all(int closed_mask, FILE *report) {
    int tried = 0;
    for (int code = 0; code < file_count * file_count * file_count; code++) {
        int in = code / 36;
        int out = code / 6 % 6;
        int err = code % 6;
        if (is_closed(closed_mask, in) || is_closed(closed_mask, out) ||
            is_closed(closed_mask, err)) {
            continue;
        }
        arrange(closed_mask);
        setstdfids(in, out, err);
        std::string wrong = fault(in, out, err);
        if (!wrong.empty()) {
            fprintf(report, "(%d, %d, %d) with closed %d: %s\n", in, out, err,
                    closed_mask, wrong.c_str());
        }
        tried++;
    }
    return tried;
}

TEST(setstdfids, every_arrangement_with_every_set_closed_at_the_start) {
    const int expected[] = {216, 125, 125, 64, 125, 64, 64, 27};
    for (int closed_mask = 0; closed_mask < 8; closed_mask++) {
        support::outcome end = support::in_child([&] {
            fcntl(2, F_DUPFD, 300);
            FILE *report = fdopen(300, "w");
            setvbuf(report, nullptr, _IONBF, 0);
            open_files();
            int tried = try_all(closed_mask, report);
            _exit(tried == expected[closed_mask] ? 0 : 1);
        });
        EXPECT_EQ(end.err, "");
        EXPECT_EQ(end.exit_status, 0) << closed_mask;
    }
}

TEST(setstdfids, what_stands_right_is_not_touched_even_when_closed) {
    support::outcome end = support::in_child([] {
        close(0);
        close(1);
        setstdfids(0, 1, 2);
        if (fcntl(0, F_GETFD) != -1 || fcntl(1, F_GETFD) != -1) _exit(1);
    });
    EXPECT_EQ(end.exit_status, 0);
    EXPECT_EQ(end.err, "");
}

TEST(setstdfids, a_descriptor_that_is_not_open_is_fatal) {
    const std::string text = ": Bad file descriptor\n";
    EXPECT_FATAL(setstdfids(99, 1, 2), 255, "test: forkcmmd() dup2(2)" + text);
    EXPECT_FATAL(setstdfids(0, -1, 2), 255, "test: forkcmmd() dup2(2)" + text);
    EXPECT_FATAL(
        {
            close(0);
            setstdfids(5, 0, 2);
        },
        255, "test: forkcmmd() dup(2)" + text);
}

void limit_descriptors(rlim_t count) {
    struct rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = count;
    setrlimit(RLIMIT_NOFILE, &limit);
}

// None is left but 0, 1 and 2, until the process is about to end.
void leave_no_descriptor() {
    limit_descriptors(3);
    for (int n = 3; n < 400; n++)
        close(n);
    set_exit_rtn([](int) { limit_descriptors(400); });
}

TEST(setstdfids, running_out_of_descriptors_is_fatal) {
    EXPECT_FATAL(
        {
            leave_no_descriptor();
            setstdfids(1, 0, 2);
        },
        255, "test: forkcmmd() dup(2): Too many open files\n");
    EXPECT_FATAL(
        {
            leave_no_descriptor();
            protect(1, 1);
        },
        255, "test: forkcmmd() dup(2): Too many open files\n");
}

void close_some(int closed_mask) {
    for (int n = 0; n < 3; n++) {
        if (is_closed(closed_mask, n)) close(n);
    }
}

// A command started with any of 0, 1, 2 closed gets the three it was given,
// on numbers above them or on the free ones themselves.
TEST(setstdfids, commands_start_with_every_set_closed) {
    support::write_file("in", "text\n");
    for (int code = 0; code < 16; code++) {
        int closed_mask = code % 8;
        bool close_first = code >= 8;
        support::outcome end = support::in_child([&] {
            if (close_first) close_some(closed_mask);
            int in = open("in", O_RDONLY);
            int out = open("out", O_WRONLY | O_CREAT | O_TRUNC, 0600);
            int err = open("err", O_WRONLY | O_CREAT | O_TRUNC, 0600);
            if (!close_first) close_some(closed_mask);
            int status = execstr(in, out, err, 1, 0, "cat; echo oops >&2");
            _exit(status == 0 ? 0 : 2);
        });
        EXPECT_EQ(end.exit_status, 0) << code;
        EXPECT_EQ(support::read_file("out"), "text\n") << code;
        EXPECT_EQ(support::read_file("err"), "oops\n") << code;
    }
}

}  // namespace
