// issymlnk_test.cc: symbolic links.
#include "support/tree.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <tovan/opentmp.h>
#include <unistd.h>

namespace {

TEST(issymlink, looks_at_the_path_itself) {
    support::write_file("file", "x");
    support::make_folders("folder");
    ASSERT_EQ(symlink("file", "to_file"), 0);
    ASSERT_EQ(symlink("folder", "to_folder"), 0);
    ASSERT_EQ(symlink("nothing", "dangling"), 0);
    ASSERT_EQ(symlink("loop", "loop"), 0);
    ASSERT_EQ(mkfifo("fifo", 0600), 0);
    const struct {
        const char *path;
        int expected;
    } rows[] = {
        {"file", 0},        {"folder", 0},   {"fifo", 0},   {"to_file", 1},
        {"to_folder", 1},   {"dangling", 1}, {"loop", 1},   {"to_folder/", 0},
        {"missing", 0},     {"file/x", 0},   {"loop/x", 0}, {"", 0},
        {"to_folder/.", 0},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(issymlink(row.path), row.expected) << row.path;
    }
}

TEST(gotsymlinks, says_yes) {
    EXPECT_EQ(gotsymlinks(), 1);
}

}  // namespace
