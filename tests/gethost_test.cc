// gethost_test.cc: the host's name, with a system of the test's own.
#include "support/child.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <string.h>
#include <tovan/gethome.h>
#include <unistd.h>

namespace {

std::string host_name = "mill.example.org";
int questions = 0;
size_t room = 0;
bool fails = false;

}  // namespace

// A name that does not fit is cut without an end, as some systems do.
extern "C" int gethostname(char *name, size_t size) noexcept {
    ++questions;
    room = size;
    if (fails) {
        errno = ENAMETOOLONG;
        return -1;
    }
    memset(name, '!', size);
    memcpy(name, host_name.c_str(), std::min(size, host_name.size() + 1));
    return 0;
}

namespace {

TEST(get_host, asks_once_with_64_bytes) {
    EXPECT_STREQ(get_host(), "mill.example.org");
    EXPECT_EQ(room, 64u);
    host_name = "other";
    EXPECT_STREQ(get_host(), "mill.example.org");
    EXPECT_EQ(questions, 1);
}

TEST(get_host, a_cut_name_is_ended) {
    host_name = std::string(70, 'h');
    EXPECT_EQ(get_host(), std::string(63, 'h'));
}

TEST(get_host, failure_is_fatal) {
    fails = true;
    EXPECT_FATAL(get_host(), 255, "test: gethostname() failed\n");
}

}  // namespace
