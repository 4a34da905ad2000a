// dup2_test.cc: dup2 over fcntl.
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string.h>
#include <sys/stat.h>
#include <tovan/tovan.h>
#include <unistd.h>

extern "C" const char SID_dup2[];

namespace {

bool same_file(int a, int b) {
    struct stat one;
    struct stat other;
    return fstat(a, &one) == 0 && fstat(b, &other) == 0 &&
           one.st_ino == other.st_ino && one.st_dev == other.st_dev;
}

bool is_open(int descriptor) {
    return fcntl(descriptor, F_GETFD) != -1;
}

int open_new(const char *name) {
    return open(name, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
}

TEST(dup2, is_the_librarys_own) {
    EXPECT_STREQ(SID_dup2, "@(#)-ltovan(dup2)\t8.4 - 26/11/21");
}

TEST(dup2, gives_the_new_number_to_the_old_file) {
    int file = open_new("a");
    EXPECT_EQ(dup2(file, 100), 100);
    EXPECT_TRUE(same_file(file, 100));
    EXPECT_EQ(fcntl(100, F_GETFD), 0) << "a copy is inherited";
    EXPECT_EQ(fcntl(file, F_GETFD), FD_CLOEXEC);
}

TEST(dup2, closes_what_had_the_number) {
    int a = open_new("a");
    int b = open_new("b");
    int last[2];
    ASSERT_EQ(pipe(last), 0);
    EXPECT_EQ(dup2(a, last[1]), last[1]);
    char byte;
    EXPECT_EQ(read(last[0], &byte, 1), 0) << "the pipe's writer is closed";
    EXPECT_EQ(dup2(b, a), a);
    EXPECT_TRUE(same_file(a, b));
}

TEST(dup2, an_old_descriptor_that_is_not_open_fails_and_closes_nothing) {
    int a = open_new("a");
    for (int closed : {500, -1}) {
        errno = 0;
        EXPECT_EQ(dup2(closed, a), -1);
        EXPECT_EQ(errno, EBADF);
        EXPECT_TRUE(is_open(a));
    }
    EXPECT_EQ(dup2(500, 500), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST(dup2, onto_itself_closes_nothing) {
    int a = open_new("a");
    ASSERT_EQ(write(a, "x", 1), 1);
    EXPECT_EQ(dup2(a, a), a);
    EXPECT_EQ(lseek(a, 0, SEEK_CUR), 1);
    EXPECT_EQ(fcntl(a, F_GETFD), FD_CLOEXEC);
}

TEST(dup2, an_impossible_number_fails) {
    int a = open_new("a");
    for (int number : {-1, 1 << 30}) {
        EXPECT_EQ(dup2(a, number), -1);
        EXPECT_NE(errno, 0);
        EXPECT_TRUE(is_open(a));
    }
}

TEST(protect, copies_only_the_forbidden_number) {
    int a = open_new("a");
    EXPECT_EQ(protect(a, a + 1), a);
    EXPECT_EQ(protect(-1, 0), -1);
    int copy = protect(a, a);
    EXPECT_NE(copy, a);
    EXPECT_TRUE(same_file(copy, a));
}

}  // namespace
