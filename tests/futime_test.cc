// futime_test.cc: the times of a file.
#include "support/tree.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <tovan/opentmp.h>
#include <unistd.h>

namespace {

TEST(futime, sets_both_times_in_seconds) {
    support::write_file("file", "x");
    const struct {
        time_t accessed;
        time_t modified;
    } rows[] = {{0, 0}, {1, 2}, {1000000000, 999999999}, {-1, -100000}};
    for (const auto &row : rows) {
        EXPECT_EQ(futime("file", row.accessed, row.modified), 0);
        struct stat status = {};
        ASSERT_EQ(stat("file", &status), 0);
        EXPECT_EQ(status.st_atim.tv_sec, row.accessed);
        EXPECT_EQ(status.st_mtim.tv_sec, row.modified);
        EXPECT_EQ(status.st_atim.tv_nsec, 0);
        EXPECT_EQ(status.st_mtim.tv_nsec, 0);
    }
}

TEST(futime, follows_a_symbolic_link) {
    support::write_file("file", "x");
    ASSERT_EQ(symlink("file", "link"), 0);
    EXPECT_EQ(futime("link", 5, 6), 0);
    struct stat status = {};
    ASSERT_EQ(stat("file", &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 6);
}

TEST(futime, fails_as_the_system_does) {
    support::write_file("file", "x");
    const struct {
        const char *path;
        int reason;
    } rows[] = {{"missing", ENOENT}, {"file/x", ENOTDIR}, {"", ENOENT}};
    for (const auto &row : rows) {
        errno = 0;
        EXPECT_EQ(futime(row.path, 1, 2), -1) << row.path;
        EXPECT_EQ(errno, row.reason) << row.path;
    }
}

}  // namespace
