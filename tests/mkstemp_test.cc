// mkstemp_test.cc: new files for templates, with randomness and system calls
// of the test's own.
#include "support/child.h"
#include "support/creation.h"
#include "support/tree.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <set>
#include <string>
#include <vector>

extern "C" const char SID_mkstemp[];

namespace {

// What getrandom() answers: the system's own numbers, a sequence from 1 on,
// or nothing.
enum class randomness { real, counted, none };
randomness source = randomness::real;
uint64_t last_number = 0;

}  // namespace

extern "C" ssize_t getrandom(void *buffer, size_t size, unsigned flags) {
    using original = ssize_t (*)(void *, size_t, unsigned);
    if (source == randomness::real)
        return reinterpret_cast<original>(dlsym(RTLD_NEXT, "getrandom"))(
            buffer, size, flags);
    errno = EAGAIN;
    if (source == randomness::none) return -1;
    EXPECT_EQ(size, sizeof last_number);
    ++last_number;
    memcpy(buffer, &last_number, size);
    return static_cast<ssize_t>(size);
}

namespace {

constexpr char characters[] =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";

// The base made of a small counted number.
std::string base_of(uint64_t number) {
    std::string base;
    for (int i = 0; i < 6; ++i, number /= 62)
        base += characters[number % 62];
    return base;
}

// The name of the file made, closed; "errno N" when there was none.
std::string made_for(const std::string &pattern) {
    std::string name = pattern;
    errno = 0;
    int descriptor = mkstemp(name.data());
    if (descriptor == -1) {
        int reason = errno;
        EXPECT_EQ(name, pattern) << "the pattern is as it was";
        return "errno " + std::to_string(reason);
    }
    close(descriptor);
    return name;
}

const std::string taken = "errno " + std::to_string(EEXIST);

TEST(mkstemp, is_the_librarys_own) {
    EXPECT_STREQ(SID_mkstemp, "@(#)-ltovan(mkstemp)\t8.4 - 26/11/22");
}

TEST(mkstemp, makes_a_file_to_read_and_write) {
    char name[] = "a/xXXXXXX";
    ASSERT_EQ(mkdir("a", 0755), 0);
    int descriptor = mkstemp(name);
    ASSERT_NE(descriptor, -1);
    struct stat here = {};
    struct stat there = {};
    ASSERT_EQ(fstat(descriptor, &here), 0);
    ASSERT_EQ(lstat(name, &there), 0);
    EXPECT_EQ(here.st_ino, there.st_ino);
    EXPECT_EQ(here.st_mode, S_IFREG | 0600u);
    EXPECT_EQ(here.st_size, 0);
    EXPECT_EQ(write(descriptor, "text", 4), 4);
    char text[5] = "";
    EXPECT_EQ(pread(descriptor, text, 4, 0), 4);
    EXPECT_STREQ(text, "text");
    EXPECT_EQ(fcntl(descriptor, F_GETFD), 0) << "commands inherit it";
    close(descriptor);
    EXPECT_EQ(strncmp(name, "a/x", 3), 0);
    EXPECT_EQ(strspn(name + 3, characters), 6u);
}

TEST(mkstemp, names_do_not_repeat) {
    std::set<std::string> names;
    for (int i = 0; i < 10000; ++i)
        names.insert(made_for("XXXXXX"));
    EXPECT_EQ(names.size(), 10000u);
    EXPECT_EQ(names.count(taken), 0u);
}

TEST(mkstemp, names_do_not_repeat_without_the_systems_randomness) {
    source = randomness::none;
    std::set<std::string> names;
    for (int i = 0; i < 1000; ++i)
        names.insert(made_for("XXXXXX"));
    EXPECT_EQ(names.size(), 1000u);
}

TEST(mkstemp, the_umask_counts) {
    for (mode_t mask : {0u, 077u, 0777u, 0400u}) {
        umask(mask);
        std::string name = made_for("mask-XXXXXX");
        struct stat status = {};
        ASSERT_EQ(lstat(name.c_str(), &status), 0) << name;
        EXPECT_EQ(status.st_mode & 07777, 0600 & ~mask);
    }
    umask(022);
}

TEST(mkstemp, what_has_the_name_is_passed_over) {
    source = randomness::counted;
    support::write_file("victim", "untouched");
    ASSERT_EQ(chmod("victim", 0640), 0);
    ASSERT_EQ(symlink("victim", ("t" + base_of(1)).c_str()), 0);
    ASSERT_EQ(symlink("nothing", ("t" + base_of(2)).c_str()), 0);
    ASSERT_EQ(mkdir(("t" + base_of(3)).c_str(), 0700), 0);
    ASSERT_EQ(mkfifo(("t" + base_of(4)).c_str(), 0600), 0);
    support::write_file("t" + base_of(5), "old");
    EXPECT_EQ(made_for("tXXXXXX"), "t" + base_of(6));
    EXPECT_EQ(support::read_file("victim"), "untouched");
    EXPECT_EQ(support::read_file("t" + base_of(5)), "old");
    EXPECT_FALSE(support::file_exists("nothing"));
    struct stat status = {};
    ASSERT_EQ(stat("victim", &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
}

TEST(mkstemp, gives_up_after_26_names) {
    source = randomness::counted;
    for (uint64_t number = 1; number <= 26; ++number)
        ASSERT_EQ(symlink("nothing", base_of(number).c_str()), 0);
    EXPECT_EQ(made_for("XXXXXX"), taken);
    EXPECT_EQ(support::creations, 26u);
    EXPECT_EQ(made_for("XXXXXX"), base_of(27));
    last_number = 1;
    EXPECT_EQ(made_for("XXXXXX"), taken) << "25 links and the file";
    EXPECT_FALSE(support::file_exists("nothing"));
}

TEST(mkstemp, every_failure_is_eexist) {
    support::write_file("plain", "");
    for (const char *pattern :
         {"none/XXXXXX", "plain/XXXXXX", "", "XXXXX", "x.XXXXXX.c", "XXXXXx"})
        EXPECT_EQ(made_for(pattern), taken) << pattern;
    EXPECT_EQ(made_for(std::string(5000, 'x') + "XXXXXX"), taken);
}

TEST(mkstemp, a_failure_that_passes_is_survived) {
    for (int reason : {EACCES, EEXIST, EIO, EMFILE, ENFILE, ENOSPC, EDQUOT,
                       ENOMEM, EINTR, ELOOP, ENOENT}) {
        support::fail_creations(std::vector<int>(25, reason));
        EXPECT_NE(made_for("XXXXXX"), taken) << strerror(reason);
        EXPECT_EQ(support::creations, 26u);
    }
}

TEST(mkstemp, signals_do_not_count_as_tries) {
    support::fail_creations(std::vector<int>(100, EINTR));
    EXPECT_NE(made_for("XXXXXX"), taken);
    EXPECT_EQ(support::creations, 101u);
    support::fail_creations(std::vector<int>(26, ENOSPC));
    EXPECT_EQ(made_for("XXXXXX"), taken);
    EXPECT_EQ(support::creations, 26u);
}

// Both make their files from the same sequence of names.
TEST(mkstemp, two_processes_never_share_a_file) {
    constexpr int files = 1000;
    source = randomness::counted;
    auto make_files = [](const char *mark) {
        for (int i = 0; i < files; ++i) {
            char name[] = "XXXXXX";
            int descriptor;
            do {
                descriptor = mkstemp(name);
            } while (descriptor == -1);
            if (write(descriptor, mark, 1) != 1) _exit(1);
            close(descriptor);
        }
    };
    pid_t child = fork();
    if (child == 0) {
        make_files("c");
        _exit(0);
    }
    make_files("p");
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    int of_child = 0;
    for (uint64_t number = 1; number <= 2 * files; ++number) {
        std::string mark = support::read_file(base_of(number));
        EXPECT_EQ(mark.size(), 1u) << base_of(number);
        of_child += mark == "c";
    }
    EXPECT_EQ(of_child, files);
}

}  // namespace
