// svstr_test.cc: saved strings under keys.
#include <gtest/gtest.h>
#include <string.h>
#include <tovan/strutil.h>
#include <algorithm>
#include <map>
#include <random>
#include <vector>

namespace {

int count_of(const svnode &head) {
    int count = 0;
    for (const svnode *at = head.next; at != nullptr; at = at->next)
        count++;
    return count;
}

void remove_all(svnode *head) {
    while (head->next != nullptr) {
        std::string key = head->next->key;
        svstr(head, key.c_str(), nullptr);
    }
}

TEST(svstr, saves_copies_of_key_and_value) {
    svnode head{};
    char key[] = "key", value[] = "value";
    const char *saved = svstr(&head, key, value);
    EXPECT_STREQ(saved, "value");
    strcpy(key, "xxx");
    strcpy(value, "yyyy");
    EXPECT_EQ(fndsvstr(&head, "key"), saved);
    EXPECT_STREQ(saved, "value");
    remove_all(&head);
}

TEST(svstr, new_keys_go_to_the_front) {
    svnode head{};
    svstr(&head, "a", "1");
    svstr(&head, "b", "2");
    EXPECT_STREQ(head.next->key, "b");
    EXPECT_STREQ(head.next->next->key, "a");
    remove_all(&head);
}

TEST(svstr, the_same_key_keeps_one_node_with_the_second_value) {
    svnode head{};
    svstr(&head, "a", "1");
    EXPECT_STREQ(svstr(&head, "a", "2"), "2");
    EXPECT_EQ(count_of(head), 1);
    EXPECT_STREQ(fndsvstr(&head, "a"), "2");
    remove_all(&head);
}

TEST(svstr, an_equal_value_stays_where_it_is) {
    svnode head{};
    const char *saved = svstr(&head, "a", "same");
    EXPECT_EQ(svstr(&head, "a", "same"), saved);
    EXPECT_EQ(svstr(&head, "a", saved), saved);
    remove_all(&head);
}

TEST(svstr, the_new_value_may_lie_inside_the_old) {
    svnode head{};
    const char *saved = svstr(&head, "a", "0123456789");
    EXPECT_STREQ(svstr(&head, "a", saved + 5), "56789");
    remove_all(&head);
}

TEST(svstr, a_null_value_removes) {
    svnode head{};
    svstr(&head, "a", "1");
    svstr(&head, "b", "2");
    svstr(&head, "c", "3");
    EXPECT_EQ(svstr(&head, "b", nullptr), nullptr);
    EXPECT_EQ(fndsvstr(&head, "b"), nullptr);
    EXPECT_EQ(count_of(head), 2);
    EXPECT_EQ(svstr(&head, "b", nullptr), nullptr);
    EXPECT_EQ(count_of(head), 2);
    remove_all(&head);
}

TEST(svstr, a_removed_node_is_the_next_to_be_used) {
    svnode head{};
    svstr(&head, "a", "1");
    svnode *node = head.next;
    svstr(&head, "a", nullptr);
    svstr(&head, "b", "2");
    EXPECT_EQ(head.next, node);
    remove_all(&head);
}

TEST(svstr, takes_20_nodes_at_once) {
    svnode head{};
    std::vector<svnode *> nodes;
    for (int i = 0; i < 20; i++) {
        svstr(&head, std::to_string(i).c_str(), "x");
        nodes.push_back(head.next);
    }
    std::sort(nodes.begin(), nodes.end());
    for (size_t i = 0; i < nodes.size(); i++)
        EXPECT_EQ(nodes[i], nodes[0] + i);
    svstr(&head, "20", "x");
    EXPECT_TRUE(head.next < nodes[0] || head.next > nodes[19]);
    remove_all(&head);
}

TEST(svstr, an_empty_value_is_a_value) {
    svnode head{};
    EXPECT_STREQ(svstr(&head, "a", ""), "");
    EXPECT_STREQ(fndsvstr(&head, "a"), "");
    remove_all(&head);
}

TEST(fndsvstr, finds_nothing_for_an_empty_key_or_a_null_head) {
    svnode head{};
    svstr(&head, "", "1");
    EXPECT_EQ(fndsvstr(&head, ""), nullptr);
    EXPECT_EQ(fndsvstr(nullptr, "a"), nullptr);
    EXPECT_EQ(fndsvstr(&head, "a"), nullptr);
    remove_all(&head);
}

TEST(svstr, agrees_with_a_map_under_random_operations) {
    std::mt19937 random(3);
    svnode head{};
    std::map<std::string, std::string> plain;
    for (int step = 0; step < 20000; step++) {
        std::string key = std::to_string(random() % 60);
        if (random() % 3 == 0) {
            EXPECT_EQ(svstr(&head, key.c_str(), nullptr), nullptr);
            plain.erase(key);
        } else {
            plain[key] = std::to_string(random() % 5);
            EXPECT_EQ(svstr(&head, key.c_str(), plain[key].c_str()),
                      plain[key]);
        }
        ASSERT_EQ(count_of(head), static_cast<int>(plain.size()));
    }
    for (const auto &[key, value] : plain)
        EXPECT_EQ(fndsvstr(&head, key.c_str()), value);
    remove_all(&head);
}

}  // namespace
