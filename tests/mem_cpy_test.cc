// mem_cpy_test.cc: areas of memory.
#include <gtest/gtest.h>
#include <stdint.h>
#include <string.h>
#include <tovan/strutil.h>

namespace {

TEST(mem_chr, looks_at_n_bytes_only) {
    const char area[] = "ab\0cb";
    EXPECT_EQ(mem_chr(area, 'b', 5), area + 1);
    EXPECT_EQ(mem_chr(area, 'c', 5), area + 3);
    EXPECT_EQ(mem_chr(area, 'c', 3), nullptr);
    EXPECT_EQ(mem_chr(area, 0, 5), area + 2);
    EXPECT_EQ(mem_chr(area, 'a', 0), nullptr);
    EXPECT_NE(mem_chr("\xff", -1, 1), nullptr);
}

TEST(mem_cmp, mem_cmp_is_no_ordering) {
    EXPECT_EQ(mem_cmp("ab", "ba", 2), 1);
    EXPECT_EQ(mem_cmp("ba", "ab", 2), 1);
    EXPECT_EQ(mem_cmp("ab", "ab", 2), 0);
    EXPECT_EQ(mem_cmp("ab", "ac", 1), 0);
    EXPECT_EQ(mem_cmp("a\0b", "a\0c", 3), 1);
    EXPECT_EQ(mem_cmp("a", "b", 0), 0);
}

// Every placement of source and destination in a small area, against a copy
// through a second area.
template <typename Copy>
void expect_overlap_safe(Copy copy) {
    for (size_t from = 0; from < 12; from++) {
        for (size_t to = 0; to < 12; to++) {
            for (size_t n = 0; n <= 12; n++) {
                char area[] = "abcdefghijklmnopqrstuvwxyz";
                std::string expected = area;
                expected.replace(to, n, std::string(area + from, n));
                EXPECT_EQ(copy(area + to, area + from, n), area + to);
                EXPECT_EQ(area, expected) << from << " " << to << " " << n;
            }
        }
    }
}

TEST(mem_cpy, copies_within_overlapping_areas) {
    expect_overlap_safe(mem_cpy);
}

TEST(mem_move, copies_within_overlapping_areas) {
    expect_overlap_safe(mem_move);
}

TEST(mem_set, fills_n_bytes) {
    char area[] = "abcdef";
    EXPECT_EQ(mem_set(area + 1, 'x', 3), area + 1);
    EXPECT_STREQ(area, "axxxef");
    EXPECT_EQ(mem_set(area, 'y', 0), area);
    EXPECT_STREQ(area, "axxxef");
}

TEST(mem_zero, zeroes_and_leaves_null_alone) {
    char area[] = "abc";
    EXPECT_EQ(mem_zero(area, 2), area);
    EXPECT_EQ(memcmp(area, "\0\0c", 4), 0);
    EXPECT_EQ(mem_zero(nullptr, 100), nullptr);
}

TEST(mem_cpy, no_bytes_may_be_anywhere) {
    EXPECT_EQ(mem_cpy(nullptr, nullptr, 0), nullptr);
    EXPECT_EQ(mem_move(nullptr, nullptr, 0), nullptr);
    EXPECT_EQ(mem_set(nullptr, 1, 0), nullptr);
    EXPECT_EQ(mem_cmp(nullptr, nullptr, 0), 0);
    EXPECT_EQ(mem_chr(nullptr, 1, 0), nullptr);
}

TEST(wordalign, rounds_up_to_fours) {
    for (uintptr_t n = 0; n < 100; n++) {
        uintptr_t aligned = wordalign(n);
        EXPECT_EQ(aligned % 4, 0u);
        EXPECT_GE(aligned, n);
        EXPECT_LT(aligned, n + 4);
    }
    EXPECT_EQ(wordalign(5000000001u), 5000000004u);
}

}  // namespace
