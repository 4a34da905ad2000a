// uniqid_test.cc: identifiers, with time, process and host made up.
#include <errno.h>
#include <gtest/gtest.h>
#include <string.h>
#include <time.h>
#include <tovan/convert.h>
#include <unistd.h>
#include "support/child.h"

namespace {

// What the library is told about the world while a case runs.
struct made_up {
    bool is_on = false;
    time_t now = 0;
    pid_t process = 0;
    std::string host;
    int host_questions = 0;
};
made_up world;

}  // namespace

extern "C" time_t time(time_t *result) noexcept {
    struct timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    time_t seconds = world.is_on ? world.now : now.tv_sec;
    if (result != nullptr) *result = seconds;
    return seconds;
}

extern "C" pid_t getpid(void) noexcept {
    return world.is_on ? world.process : getpgrp();
}

extern "C" int gethostname(char *name, size_t size) noexcept {
    world.host_questions++;
    strncpy(name, world.host.c_str(), size);
    if (world.host.size() < size) return 0;
    errno = ENAMETOOLONG;
    return -1;
}

namespace {

// A process asks for its host once: each case has one of its own.
std::string in_made_up_world(const std::string &host, time_t now, pid_t process,
                             const std::function<void()> &body) {
    return support::in_child([&] {
               world = {true, now, process, host, 0};
               body();
           })
        .out;
}

void show() {
    puts(uniqid());
}

TEST(uniqid, time_process_host_and_sequence) {
    // 1000 / 4 = 250 = 3 * 64 + 58, and 0 remains; 100 = 1 * 64 + 36.
    EXPECT_EQ(in_made_up_world("hostname", 1000, 100, show),
              "0003w01ahostn0\n");
    // 1001: the remainder 1 counts 65536 = 16 * 4096.
    EXPECT_EQ(in_made_up_world("hostname", 1001, 100, show),
              "0003wG1ahostn0\n");
}

TEST(uniqid, short_host_names_are_padded) {
    EXPECT_EQ(in_made_up_world("ab", 4, 0, show), "00001000ab___0\n");
    EXPECT_EQ(in_made_up_world("", 4, 0, show), "00001000_____0\n");
    EXPECT_EQ(in_made_up_world("abcde", 4, 0, show), "00001000abcde0\n");
}

TEST(uniqid, a_host_name_beyond_64_bytes_is_cut) {
    EXPECT_EQ(in_made_up_world(std::string(100, 'h'), 4, 0, show),
              "00001000hhhhh0\n");
}

TEST(uniqid, sequence_counts_within_a_second_and_wraps_after_64) {
    std::string output = in_made_up_world("h", 400, 1, [] {
        for (int i = 0; i < 65; i++)
            show();
        world.now++;
        show();
        show();
    });
    const std::string digits =
        "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"
        "abcdefghijklmnopqrstuvwxyz@%";
    std::string expected;
    for (size_t i = 0; i < 65; i++)
        expected += std::string("0001a001h____") + digits[i % 64] + "\n";
    expected += "0001aG01h____0\n0001aG01h____1\n";
    EXPECT_EQ(output, expected);
}

TEST(uniqid, process_and_host_are_asked_once) {
    EXPECT_EQ(in_made_up_world("one", 400, 1,
                               [] {
                                   uniqid();
                                   world.host = "two";
                                   world.process = 2;
                                   world.now = 404;
                                   show();
                                   printf("%d\n", world.host_questions);
                               }),
              "0001b001one__0\n1\n");
}

TEST(uniqid, large_process_ids_keep_their_low_18_bits) {
    EXPECT_EQ(in_made_up_world("h", 400, 0x3ffff, show), "0001a%%%h____0\n");
    EXPECT_EQ(in_made_up_world("h", 400, 0x40001, show), "0001a001h____0\n");
}

TEST(uniqid, real_ones_have_14_characters) {
    std::string first = uniqid(), second = uniqid();
    EXPECT_EQ(first.size(), 14u);
    EXPECT_NE(first, second);
    EXPECT_EQ(uniqid(), uniqid()) << "one buffer";
}

TEST(stuffnum, writes_width_digits_and_nothing_else) {
    const struct {
        uint32_t value;
        int width;
        const char *text;
    } rows[] = {
        {0, 1, "0......"},   {63, 1, "%......"},  {64, 1, "0......"},
        {64, 2, "10....."},  {36, 3, "00a...."},  {10, 2, "0A....."},
        {~0u, 6, "3%%%%%."}, {~0u, 7, "03%%%%%"}, {5, 0, "......."},
        {5, -1, "......."},
    };
    for (const auto &row : rows) {
        char buffer[] = ".......";
        stuffnum(buffer, row.value, row.width);
        EXPECT_STREQ(buffer, row.text) << row.value << " " << row.width;
    }
}

}  // namespace
