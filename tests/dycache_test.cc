// dycache_test.cc: permanent copies, packed into chunks.
#include "support/child.h"
#include "support/records.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/dystr.h>
#include <random>
#include <string>
#include <vector>

namespace {

std::string letters(int n, char letter = 'x') {
    return std::string(static_cast<size_t>(n), letter);
}

// The cache lasts as long as the process. Each test but the last has a process
// of its own, so that they can all run in one program.
void with_fresh_cache(const std::function<void()> &body) {
    support::outcome end = support::in_child([&] {
        body();
        if (testing::Test::HasFailure()) exit(1);
    });
    EXPECT_EQ(end.exit_status, 0) << end.out << end.err;
}

char *cached(const std::string &text) {
    return dycache(text.data(), static_cast<int>(text.size()));
}

TEST(dycache, packs_copies_side_by_side) {
    with_fresh_cache([] {
        char *first = dycache("abc", -1);
        char *second = dycache("abc", -1);
        EXPECT_STREQ(first, "abc");
        EXPECT_STREQ(second, "abc");
        EXPECT_EQ(second - first, 4);
    });
}

TEST(dycache, copies_exactly_n_bytes) {
    with_fresh_cache([] {
        char *copy = dycache("ab\0cd", 4);
        EXPECT_EQ(std::string(copy, 5), std::string("ab\0c\0", 5));
        EXPECT_STREQ(dycache("abcdef", 2), "ab");
        EXPECT_STREQ(dycache("abcdef", 0), "");
    });
}

TEST(dycache, the_empty_string_takes_its_terminator) {
    with_fresh_cache([] {
        char *first = dycache("", -1);
        char *second = dycache("", -1);
        EXPECT_EQ(second - first, 1);
    });
}

TEST(dycache, dycache_fills_no_chunk_to_its_last_byte) {
    with_fresh_cache([] {
        // 1016 bytes a chunk: 1000 and a terminator leave 15.
        char *start = cached(letters(1000));
        char *elsewhere = cached(letters(14));  // needs all 15
        EXPECT_NE(elsewhere, start + 1001);
        EXPECT_EQ(cached(letters(13)), start + 1001);
        EXPECT_EQ(dycache("", -1),
                  elsewhere + 15);  // 1 byte is left in the first
    });
}

TEST(dycache, a_new_chunk_may_be_filled) {
    with_fresh_cache([] {
        char *whole = cached(letters(1015));
        EXPECT_STREQ(whole, letters(1015).c_str());
        EXPECT_NE(dycache("", -1), whole + 1016);
    });
}

TEST(dycache, a_long_string_has_a_chunk_of_its_own) {
    with_fresh_cache([] {
        char *before = dycache("a", -1);
        for (int n : {1016, 1017, 5000, 1000000}) {
            char *copy = cached(letters(n));
            EXPECT_EQ(std::string(copy), letters(n));
        }
        EXPECT_EQ(dycache("b", -1), before + 2);
    });
}

TEST(dycache, goes_back_to_the_first_chunk_with_room) {
    with_fresh_cache([] {
        char *first = cached(letters(900));
        char *second = cached(letters(900));
        char *third = cached(letters(500));
        EXPECT_EQ(cached(letters(400)), third + 501);
        EXPECT_EQ(cached(letters(100)), first + 901);
        EXPECT_EQ(cached(letters(100)), second + 901);
        EXPECT_EQ(cached(letters(10)), first + 901 + 101);
    });
}

// The list walk as it is written down.
class chunk_list {
  public:
    // Where a string goes: the number of its chunk and the place in it.
    std::pair<size_t, int> place(int n) {
        size_t at = 0;
        while (at < chunks_.size() &&
               !(n + chunks_[at].used + 1 < chunks_[at].capacity))
            at++;
        if (at == chunks_.size())
            chunks_.push_back({0, n >= 1016 ? n + 1 : 1016});
        int used = chunks_[at].used;
        chunks_[at].used += n + 1;
        return {at, used};
    }

  private:
    struct chunk {
        int used;
        int capacity;
    };
    std::vector<chunk> chunks_;
};

TEST(dycache, finds_the_same_chunk_as_a_walk_along_the_list) {
    std::mt19937 random(2);
    chunk_list list;
    std::vector<char *> starts;
    std::vector<std::pair<char *, std::string>> kept;
    for (int i = 0; i < 20000; i++) {
        unsigned kind = static_cast<unsigned>(random() % 100);
        int n = static_cast<int>(kind < 80   ? random() % 40
                                 : kind < 97 ? random() % 600
                                             : random() % 2000);
        std::string text = letters(n, static_cast<char>('a' + i % 26));
        auto [chunk, used] = list.place(n);
        char *copy = cached(text);
        if (chunk == starts.size()) starts.push_back(copy);
        ASSERT_EQ(copy, starts[chunk] + used) << i;
        kept.push_back({copy, text});
    }
    for (const auto &[copy, text] : kept)
        ASSERT_EQ(std::string(copy), text);
}

}  // namespace
