// clonfork_test.cc: descriptors that no command inherits.
#include "support/child.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <tovan/execstr.h>
#include <unistd.h>
#include <vector>

namespace {

// Numbers from here on are written down instead of closed.
constexpr int pretended = 1000;
std::vector<int> closed;

}  // namespace

extern "C" int close(int descriptor) {
    if (descriptor >= pretended) {
        closed.push_back(descriptor);
        return 0;
    }
    auto original = reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "close"));
    return original(descriptor);
}

namespace {

std::vector<int> close_all() {
    closed.clear();
    closeonfork(2, -1);
    return closed;
}

class closeonfork_test : public testing::Test {
  protected:
    void TearDown() override {
        for (int descriptor : close_all())
            closeonfork(1, descriptor);
    }
};

using numbers = std::vector<int>;

TEST_F(closeonfork_test, closes_last_first_and_keeps_the_table) {
    EXPECT_EQ(close_all(), numbers());
    closeonfork(0, 1001);
    closeonfork(0, 1002);
    closeonfork(0, 1003);
    EXPECT_EQ(close_all(), (numbers{1003, 1002, 1001}));
    EXPECT_EQ(close_all(), (numbers{1003, 1002, 1001}));
}

TEST_F(closeonfork_test, registering_twice_counts_once) {
    closeonfork(0, 1001);
    closeonfork(0, 1002);
    closeonfork(0, 1001);
    EXPECT_EQ(close_all(), (numbers{1002, 1001}));
}

TEST_F(closeonfork_test, the_last_one_takes_the_place_of_a_removed_one) {
    for (int descriptor : {1001, 1002, 1003, 1004}) {
        closeonfork(0, descriptor);
    }
    closeonfork(1, 1002);
    EXPECT_EQ(close_all(), (numbers{1003, 1004, 1001}));
    closeonfork(1, 1003);
    EXPECT_EQ(close_all(), (numbers{1004, 1001}));
    closeonfork(1, 9999);
    EXPECT_EQ(close_all(), (numbers{1004, 1001}));
}

TEST_F(closeonfork_test, other_operations_do_nothing) {
    closeonfork(3, 1001);
    closeonfork(-1, 1001);
    EXPECT_EQ(close_all(), numbers());
}

TEST_F(closeonfork_test, keeps_129_and_no_more) {
    for (int i = 0; i < 129; i++)
        closeonfork(0, 1001 + i);
    EXPECT_EQ(close_all().size(), 129u);
    closeonfork(0, 1001);
    EXPECT_FATAL(closeonfork(0, 2000), 255,
                 "test: LOGIC ERROR - closeonfork() table full\n");
    closeonfork(1, 1001);
    closeonfork(0, 70000);
    numbers all = close_all();
    EXPECT_EQ(all.size(), 129u);
    EXPECT_EQ(all.front(), 70000);
}

TEST_F(closeonfork_test, commands_do_not_inherit_them) {
    int file = open("/dev/null", O_RDONLY);
    ASSERT_EQ(fcntl(file, F_DUPFD, 60), 60);
    const char *look = "test -e /proc/self/fd/60";
    EXPECT_EQ(WEXITSTATUS(execstr(0, 1, 2, 1, 0, look)), 0);
    closeonfork(0, 60);
    EXPECT_EQ(WEXITSTATUS(execstr(0, 1, 2, 1, 0, look)), 1);
    EXPECT_NE(fcntl(60, F_GETFD), -1) << "it stays open here";
    closeonfork(1, 60);
    EXPECT_EQ(WEXITSTATUS(execstr(0, 1, 2, 1, 0, look)), 0);
}

}  // namespace
