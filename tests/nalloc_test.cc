// nalloc_test.cc: regions of the fixed arena.
#include <gtest/gtest.h>
#include <malloc.h>
#include <string.h>
#include <tovan/chkalloc.h>
#include <map>
#include <random>

namespace {

constexpr unsigned arena_size = 4096;
constexpr size_t most_slots = 65;

// A fresh arena, whatever other tests of the same process left behind: it
// lies where one request for all of it goes.
char *arena_start() {
    static char *start = [] {
        char *whole = static_cast<char *>(nalloc(arena_size));
        EXPECT_EQ(nfree(whole), 0);
        return whole;
    }();
    return start;
}

// Every test ends with what it began: one free slot.
class arena : public testing::Test {
  protected:
    void SetUp() override {
        start = arena_start();
        ASSERT_NE(start, nullptr);
    }

    void TearDown() override {
        for (unsigned i = 0; i < arena_size; i += 4)
            nfree(start + i);
        ASSERT_EQ(nalloc(arena_size), start);
        ASSERT_EQ(nfree(start), 0);
    }

    char *start = nullptr;
};

TEST_F(arena, sizes_are_rounded_up_to_fours) {
    EXPECT_EQ(nalloc(1), start);
    EXPECT_EQ(nalloc(4), start + 4);
    EXPECT_EQ(nalloc(5), start + 8);
    EXPECT_EQ(nalloc(8), start + 16);
    EXPECT_EQ(nalloc(1), start + 24);
}

// Where the sanitizers keep the heap, nothing is known of it.
#ifndef __SANITIZE_ADDRESS__
TEST_F(arena, needs_no_heap) {
    size_t before = mallinfo2().uordblks;
    void *region = nalloc(100);
    void *moved = nrealloc(region, 10);
    EXPECT_EQ(nalloc(5000), nullptr);
    EXPECT_EQ(nfree(moved), 0);
    EXPECT_EQ(mallinfo2().uordblks, before);
}
#endif

TEST_F(arena, all_of_it_can_be_taken_at_once) {
    EXPECT_EQ(nalloc(4096), start);
    EXPECT_EQ(nalloc(4), nullptr);
    EXPECT_EQ(nfree(start), 0);
    EXPECT_EQ(nalloc(4093), start);
}

TEST_F(arena, too_much_is_refused) {
    for (unsigned size : {4097u, 5000u, 0x80000000u, 0xfffffffdu, 0xffffffffu})
        EXPECT_EQ(nalloc(size), nullptr) << size;
    EXPECT_EQ(nalloc(4096), start) << "refusals change nothing";
}

TEST_F(arena, nothing_takes_no_room) {
    EXPECT_EQ(nalloc(0), start);
    EXPECT_EQ(nfree(start), 0);
    EXPECT_EQ(nalloc(4096), start);
}

TEST_F(arena, freed_neighbours_become_one) {
    ASSERT_EQ(nalloc(8), start);
    ASSERT_EQ(nalloc(8), start + 8);
    ASSERT_EQ(nalloc(8), start + 16);
    EXPECT_EQ(nfree(start + 8), 0);
    EXPECT_EQ(nfree(start), 0);
    EXPECT_EQ(nfree(start + 8), -1) << "part of the first slot now";
    EXPECT_EQ(nalloc(20), start + 24) << "the third block is in between";
    EXPECT_EQ(nalloc(16), start) << "exactly the first two";
}

TEST_F(arena, a_slot_joins_both_neighbours) {
    ASSERT_EQ(nalloc(8), start);
    ASSERT_EQ(nalloc(8), start + 8);
    ASSERT_EQ(nalloc(8), start + 16);
    EXPECT_EQ(nfree(start), 0);
    EXPECT_EQ(nfree(start + 16), 0);
    EXPECT_EQ(nfree(start + 8), 0);
    EXPECT_EQ(nalloc(4096), start);
}

TEST_F(arena, freeing_what_is_no_start_changes_nothing) {
    ASSERT_EQ(nalloc(8), start);
    int other = 0;
    EXPECT_EQ(nfree(start + 4), -1);
    EXPECT_EQ(nfree(start - 1), -1);
    EXPECT_EQ(nfree(start + 4096), -1);
    EXPECT_EQ(nfree(&other), -1);
    EXPECT_EQ(nfree(nullptr), -1);
    EXPECT_EQ(nalloc(4), start + 8);
}

TEST_F(arena, a_free_slot_may_be_freed_again) {
    ASSERT_EQ(nalloc(8), start);
    EXPECT_EQ(nfree(start), 0);
    EXPECT_EQ(nfree(start), 0);
    EXPECT_EQ(nalloc(4096), start);
}

// After two releases the table holds one live slot; those behind it are dead
// and still name the old addresses.
TEST_F(arena, dead_slots_are_not_found) {
    ASSERT_EQ(nalloc(8), start);
    ASSERT_EQ(nalloc(8), start + 8);
    EXPECT_EQ(nfree(start + 8), 0);
    EXPECT_EQ(nfree(start), 0);
    EXPECT_EQ(nfree(start + 8), -1);
    EXPECT_EQ(nfree(start + 16), -1);
    EXPECT_EQ(nrealloc(start + 8, 4), nullptr);
    EXPECT_EQ(nalloc(4096), start);
}

TEST_F(arena, a_66th_slot_is_refused) {
    for (int i = 0; i < 64; i++)
        ASSERT_EQ(nalloc(4), start + 4 * i);
    EXPECT_EQ(nalloc(4), nullptr) << "64 blocks and the rest are 65";
    EXPECT_EQ(nalloc(4096 - 64 * 4), start + 64 * 4) << "no split needed";
}

TEST_F(arena, the_first_fit_decides_even_if_a_later_one_needs_no_split) {
    for (int i = 0; i < 63; i++)
        ASSERT_NE(nalloc(8), nullptr);
    ASSERT_EQ(nalloc(4096 - 63 * 8 - 4), start + 63 * 8);
    EXPECT_EQ(nfree(start), 0);
    EXPECT_EQ(nalloc(4), nullptr) << "the first fit has 8 bytes";
    EXPECT_EQ(nalloc(8), start);
    EXPECT_EQ(nalloc(4), start + 4092);
}

TEST_F(arena, nrealloc_larger_keeps_the_block) {
    ASSERT_EQ(nalloc(8), start);
    EXPECT_EQ(nrealloc(start, 100), start);
    EXPECT_EQ(nrealloc(start, 8), start);
    EXPECT_EQ(nalloc(4), start + 8) << "it has not grown";
}

TEST_F(arena, nrealloc_smaller_moves_to_a_new_region) {
    ASSERT_EQ(nalloc(16), start);
    memcpy(start, "0123456789abcdef", 16);
    ASSERT_EQ(nalloc(4), start + 16);
    memcpy(start + 16, "wxyz", 4);
    EXPECT_EQ(nrealloc(start, 6), start + 20);
    EXPECT_EQ(memcmp(start + 16, "wxyz01234567", 12), 0);
    EXPECT_EQ(nalloc(16), start) << "the old region is free";
}

TEST_F(arena, nrealloc_compares_with_the_rounded_size_that_was_taken) {
    ASSERT_EQ(nalloc(1), start);
    EXPECT_EQ(nrealloc(start, 3), start + 4);
}

TEST_F(arena, nrealloc_without_room_keeps_the_old_region) {
    ASSERT_EQ(nalloc(4096), start);
    EXPECT_EQ(nrealloc(start, 8), nullptr);
    EXPECT_EQ(nfree(start), 0);
}

TEST_F(arena, nrealloc_of_what_is_no_start_gives_null) {
    ASSERT_EQ(nalloc(8), start);
    EXPECT_EQ(nrealloc(start + 4, 4), nullptr);
    EXPECT_EQ(nrealloc(nullptr, 4), nullptr);
}

// The rules over a map from offsets to sizes of what is taken; everything in
// between is free.
class model {
  public:
    // The offset that a request gets, or -1.
    int take(unsigned size) {
        size = (size + 3) / 4 * 4;
        unsigned at = 0;
        for (const auto &[offset, length] : taken) {
            if (offset - at >= size && offset != at)
                return place(at, size, offset - at);
            at = offset + length;
        }
        if (arena_size - at < size || at == arena_size) return -1;
        return place(at, size, arena_size - at);
    }

    std::map<unsigned, unsigned> taken;

  private:
    int place(unsigned at, unsigned size, unsigned room) {
        if (size < room && slots() == most_slots) return -1;
        taken[at] = size;
        return static_cast<int>(at);
    }

    size_t slots() const {
        size_t count = taken.size();
        unsigned at = 0;
        for (const auto &[offset, length] : taken) {
            if (offset != at) count++;
            at = offset + length;
        }
        return count + (at != arena_size);
    }
};

TEST_F(arena, agrees_with_a_plain_model_under_random_requests) {
    std::mt19937 generator(11);
    auto random = [&] { return static_cast<unsigned>(generator()); };
    model plain;
    auto offset_of = [&](void *region) {
        return region == nullptr
                   ? -1
                   : static_cast<int>(static_cast<char *>(region) - start);
    };
    auto random_block = [&] {
        auto at = plain.taken.begin();
        std::advance(at, random() % plain.taken.size());
        return at;
    };
    for (int step = 0; step < 200000; step++) {
        unsigned size = 1 + random() % (random() % 8 == 0 ? 1500 : 90);
        // Long stretches of growth and of shrinking.
        bool grows = random() % 100 < (step / 1000 % 2 ? 40u : 60u);
        if (plain.taken.empty() || grows) {
            int expected = plain.take(size);
            char *region = static_cast<char *>(nalloc(size));
            ASSERT_EQ(offset_of(region), expected) << "step " << step;
            if (region != nullptr) memset(region, expected & 0xff, size);
        } else if (random() % 4 != 0) {
            auto block = random_block();
            ASSERT_EQ(nfree(start + block->first), 0) << "step " << step;
            plain.taken.erase(block);
        } else {
            auto [offset, length] = *random_block();
            char first = start[offset];
            int expected = static_cast<int>(offset);
            if (size < length && (expected = plain.take(size)) >= 0)
                plain.taken.erase(offset);
            void *moved = nrealloc(start + offset, size);
            ASSERT_EQ(offset_of(moved), expected) << "step " << step;
            if (moved == nullptr) continue;
            ASSERT_EQ(*static_cast<char *>(moved), first);
        }
    }
}

}  // namespace
