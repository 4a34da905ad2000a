// hashtree_test.cc: tables of hashed texts, and the tree beside each.
#include "support/crowd.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <random>

namespace {

using tovan::hash_slot;
using tovan::hash_table;

// A table over texts, counting what it looks at.
class counted_table {
  public:
    explicit counted_table(size_t count) : table(tovan::new_hash_table(count)) {
    }
    ~counted_table() {
        free_hash_table(&table);
    }

    // Enters a text, or finds it; its number, from 1 on.
    uint32_t enter(const std::string &text) {
        tovan::hashed_text key = hashed(text);
        hash_slot *slot = slot_for(
            &table, key.tag,
            [&](const hash_slot *each) { return has_text(each, text); },
            [&] { return key; });
        if (slot->at == 0) {
            texts.push_back(text);
            *slot = {key.tag, static_cast<uint32_t>(texts.size())};
        }
        return slot->at;
    }

    uint32_t find(const std::string &text) {
        tovan::hashed_text key = hashed(text);
        return find_at(
            &table, key.tag,
            [&](const hash_slot *each) { return has_text(each, text); },
            [&] { return key; });
    }

    hash_table table;
    std::vector<std::string> texts;
    size_t comparisons = 0;

  private:
    static tovan::hashed_text hashed(const std::string &text) {
        return {text.data(), text.size(),
                tovan::text_tag(text.data(), text.size())};
    }

    bool has_text(const hash_slot *slot, const std::string &text) {
        ++comparisons;
        return texts[slot->at - 1] == text;
    }
};

void check_crowd(std::vector<std::string> crowd) {
    counted_table counted(crowd.size());
    tovan::other_comparisons = 0;
    for (size_t i = 0; i < crowd.size(); ++i)
        EXPECT_EQ(counted.enter(crowd[i]), i + 1);
    EXPECT_NE(counted.table.others, nullptr);
    for (size_t i = 0; i < crowd.size(); ++i)
        EXPECT_EQ(counted.enter(crowd[i]), i + 1);
    for (size_t i = 0; i < crowd.size(); ++i)
        EXPECT_EQ(counted.find(crowd[i]), i + 1);
    for (const std::string &text : crowd)
        EXPECT_EQ(counted.find(text + "x"), 0u);
    // Four passes; a balanced tree of n is at most 2 log n deep.
    size_t depth = 0;
    while (size_t{1} << depth < crowd.size())
        ++depth;
    EXPECT_LE(counted.comparisons, 4 * crowd.size() * tovan::longest_search);
    EXPECT_LE(tovan::other_comparisons, 5 * crowd.size() * 2 * depth);
    EXPECT_GT(tovan::other_comparisons, crowd.size());
}

TEST(hashtree, texts_with_one_tag_do_not_cost_each_other) {
    std::vector<std::string> crowd = support::equal_tags(10000);
    check_crowd(crowd);
    std::reverse(crowd.begin(), crowd.end());
    check_crowd(crowd);
    std::shuffle(crowd.begin(), crowd.end(), std::mt19937(8));
    check_crowd(crowd);
}

TEST(hashtree, texts_with_one_place_do_not_cost_each_other) {
    check_crowd(support::equal_places(500));
}

TEST(hashtree, usual_texts_need_no_tree) {
    for (size_t count : {1u, 2u, 3u, 64u, 1000u, 65536u, 100000u}) {
        counted_table counted(count);
        for (size_t i = 0; i < count; ++i)
            counted.enter("Name" + std::to_string(i));
        EXPECT_EQ(counted.table.others, nullptr) << count;
        EXPECT_EQ(counted.texts.size(), count);
    }
}

TEST(hashtree, the_tree_keeps_copies_of_its_own) {
    std::vector<std::string> crowd = support::equal_tags(70);
    counted_table counted(100);
    for (std::string text : crowd) {
        counted.enter(text);
        std::fill(text.begin(), text.end(), '?');
    }
    for (size_t i = 0; i < crowd.size(); ++i)
        EXPECT_EQ(counted.find(crowd[i]), i + 1);
}

TEST(hashtree, removed_texts_leave_the_others) {
    hash_table table = tovan::new_hash_table(4);
    hash_slot *slots[3];
    const tovan::hashed_text texts[] = {{"a", 1, 7}, {"b", 1, 7}, {"", 0, 7}};
    for (uint32_t i = 0; i < 3; ++i) {
        slots[i] = other_slot(&table, texts[i]);
        EXPECT_TRUE(is_other(&table, slots[i]));
        EXPECT_EQ(slots[i]->at, 0u);
        slots[i]->at = i + 1;
    }
    remove_other(&table, texts[1]);
    EXPECT_EQ(find_other(&table, texts[0]), slots[0]);
    EXPECT_EQ(find_other(&table, texts[1]), nullptr);
    EXPECT_EQ(find_other(&table, texts[2]), slots[2]);
    EXPECT_EQ(slots[2]->at, 3u);
    EXPECT_FALSE(is_other(&table, table.slots));
    free_hash_table(&table);
    EXPECT_EQ(table.slots, nullptr);
    EXPECT_EQ(table.others, nullptr);
    free_hash_table(&table);
}

}  // namespace
