// makedir_test.cc: directories by command.
#include "support/child.h"
#include "support/program.h"
#include "support/tree.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <tovan/opentmp.h>
#include <unistd.h>

namespace {

mode_t mask_in_force() {
    mode_t mask = umask(0);
    umask(mask);
    return mask;
}

unsigned permissions_of(const char *path) {
    struct stat status;
    EXPECT_EQ(stat(path, &status), 0) << path;
    return status.st_mode & 07777;
}

class makedir_test : public testing::Test {
  protected:
    void SetUp() override {
        umask(022);
    }
    void TearDown() override {
        EXPECT_EQ(mask_in_force(), 022u) << "the umask was put back";
    }
};

TEST_F(makedir_test, makes_a_missing_directory) {
    const struct {
        const char *path;
        int mode;
        int keep;
        unsigned permissions;
    } rows[] = {
        {"plain", 0777, 0, 0755}, {"private", 0700, 0, 0700},
        {"kept", 0777, 1, 0777},  {"kept_less", 0770, 1, 0770},
        {"none", 0, 0, 0},        {"beyond", 07777, 0, 0755},
        {"odd", 0123, -1, 0123},  {"two words;$x", 0755, 0, 0755},
    };
    for (const auto &row : rows) {
        struct stat status = {};
        EXPECT_EQ(makedir(row.path, row.mode, row.keep, &status), 0);
        EXPECT_TRUE(S_ISDIR(status.st_mode)) << row.path;
        EXPECT_EQ(permissions_of(row.path), row.permissions) << row.path;
    }
}

TEST_F(makedir_test, an_existing_directory_gets_the_permissions) {
    struct stat status = {};
    ASSERT_EQ(mkdir("there", 0700), 0);
    EXPECT_EQ(makedir("there", 0777, 0, &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u) << "as it was before";
    EXPECT_EQ(permissions_of("there"), 0755u);
    EXPECT_EQ(makedir("there", 0777, 1, &status), 0);
    EXPECT_EQ(permissions_of("there"), 0777u);
}

TEST_F(makedir_test, permissions_that_cannot_be_changed_are_not_reported) {
    struct stat status = {};
    ASSERT_EQ(chmod("/proc/self/fd", 0777), -1);
    EXPECT_EQ(makedir("/proc/self/fd", 0777, 1, &status), 0);
    EXPECT_NE(permissions_of("/proc/self/fd"), 0777u);
}

TEST_F(makedir_test, equal_permissions_leave_the_other_bits_alone) {
    struct stat status = {};
    ASSERT_EQ(mkdir("there", 0755), 0);
    ASSERT_EQ(chmod("there", 01755), 0);
    EXPECT_EQ(makedir("there", 0755, 0, &status), 0);
    EXPECT_EQ(permissions_of("there"), 01755u);
}

TEST_F(makedir_test, something_else_is_not_a_directory) {
    support::write_file("plain", "x");
    ASSERT_EQ(chmod("plain", 0640), 0);
    for (int keep : {0, 1}) {
        struct stat status = {};
        errno = 0;
        EXPECT_EQ(makedir("plain", 0777, keep, &status), -1);
        EXPECT_EQ(errno, ENOTDIR);
        EXPECT_TRUE(S_ISREG(status.st_mode));
        EXPECT_EQ(permissions_of("plain"), 0640u);
    }
}

TEST_F(makedir_test, what_cannot_be_made_keeps_the_reason) {
    support::write_file("plain", "x");
    ASSERT_EQ(symlink("nothing", "dangling"), 0);
    const struct {
        const char *path;
        int reason;
    } rows[] = {
        {"missing/deeper", ENOENT},
        {"plain/below", ENOTDIR},
        {"dangling", ENOENT},
        {"", ENOENT},
    };
    for (const auto &row : rows) {
        struct stat status = {};
        int result = 0;
        int reason = 0;
        std::string said = support::stderr_of([&] {
            result = makedir(row.path, 0777, 1, &status);
            reason = errno;
        });
        EXPECT_EQ(result, -1) << row.path;
        EXPECT_EQ(reason, row.reason) << row.path;
        EXPECT_EQ(said.substr(0, 6), "mkdir:") << row.path;
        EXPECT_EQ(mask_in_force(), 022u) << row.path;
    }
}

TEST_F(makedir_test, a_link_to_a_directory_is_one) {
    struct stat status = {};
    ASSERT_EQ(mkdir("there", 0700), 0);
    ASSERT_EQ(symlink("there", "link"), 0);
    EXPECT_EQ(makedir("link", 0755, 0, &status), 0);
    EXPECT_EQ(permissions_of("there"), 0755u);
}

TEST_F(makedir_test, the_trait_names_the_program) {
    support::write_script("own", "umask; echo \"$#:$1\"; mkdir \"$1\"");
    setenv("_T_mkdir", "./own", 1);
    struct stat status = {};
    std::string said = support::stdout_of([&] {
        EXPECT_EQ(makedir("one", 0755, 0, &status), 0);
        setenv("_T_mkdir", "/nonexistent", 1);
        EXPECT_EQ(makedir("two", 0755, 1, &status), 0);
    });
    EXPECT_EQ(said, "0022\n1:one\n0000\n1:two\n") << "looked up once";
}

TEST_F(makedir_test, its_exit_status_does_not_count) {
    support::write_script("own", "mkdir \"$1\"; exit 3");
    setenv("_T_mkdir", "./own", 1);
    struct stat status = {};
    EXPECT_EQ(makedir("one", 0755, 0, &status), 0);
    support::write_script("own", "exit 0");
    EXPECT_EQ(makedir("two", 0755, 0, &status), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(makedir_test, an_existing_directory_asks_no_trait) {
    unsetenv("_T_mkdir");
    setenv("TRAITS_FILE", "/nonexistent", 1);
    struct stat status = {};
    ASSERT_EQ(mkdir("there", 0755), 0);
    EXPECT_EQ(makedir("there", 0755, 0, &status), 0);
    EXPECT_FATAL(makedir("missing", 0755, 0, &status), 255,
                 "test: /nonexistent ($TRAITS_FILE): cannot open, No such "
                 "file or directory\n");
}

}  // namespace
