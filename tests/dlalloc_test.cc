// dlalloc_test.cc: doubly linked lists of strings.
#include "support/child.h"
#include "support/records.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <tovan/dypadd.h>
#include <list>
#include <random>
#include <string>
#include <vector>

namespace {

dl *node_of(const char *text) {
    dl *node = dlalloc();
    dystr(&node->text, text);
    return node;
}

// The texts in order; the links back are checked on the way.
std::string texts_of(dl *const *head) {
    std::string all;
    for (dl *const *link = head; *link != nullptr; link = &(*link)->next) {
        EXPECT_EQ((*link)->back, link);
        all += (*link)->text.buffer;
    }
    return all;
}

// First of all: later the pool holds nodes of several blocks.
TEST(dlflist, takes_16_zeroed_nodes_at_once_in_address_order) {
    std::vector<dl *> taken = {dlflist(nullptr)};
    for (int i = 1; i < 16; i++) {
        taken.push_back(dlflist(nullptr));
        EXPECT_EQ(taken.back(), taken.front() + i);
        EXPECT_EQ(taken.back()->text.capacity, 0);
        EXPECT_EQ(taken.back()->text.buffer, nullptr);
    }
    dl *other = dlflist(nullptr);
    EXPECT_TRUE(other < taken.front() || other > taken.back());
    taken.push_back(other);
    for (dl *node : taken)
        dlflist(node);
}

TEST(dlalloc, gives_a_node_with_an_empty_text) {
    dl *node = dlalloc();
    EXPECT_STRING(node->text, "", 56);
    EXPECT_EQ(dlfree(node), nullptr);
}

TEST(dlalloc, a_released_node_keeps_its_buffer) {
    dl *node = dlalloc();
    dystr(&node->text, std::string(100, 'x').c_str());
    char *buffer = node->text.buffer;
    dlfree(node);
    EXPECT_EQ(dlalloc(), node);
    EXPECT_EQ(node->text.buffer, buffer);
    EXPECT_STRING(node->text, "", 56 + 128);
}

// An address-space limit is the end of the sanitizers, too.
#ifndef __SANITIZE_ADDRESS__
void end_memory() {
    const rlimit none = {1 << 20, 1 << 20};
    setrlimit(RLIMIT_AS, &none);
}

TEST(dlflist, gives_null_when_memory_ends) {
    support::outcome end = support::in_child([] {
        end_memory();
        while (dlflist(nullptr) != nullptr)
            continue;
    });
    EXPECT_EQ(end.exit_status, 0);
}

TEST(dlalloc, ends_when_memory_ends) {
    support::outcome end = support::in_child([] {
        end_memory();
        while (dlflist(nullptr) != nullptr)
            continue;
        dlalloc();
    });
    EXPECT_EQ(end.signal, SIGABRT);
    EXPECT_EQ(end.err, "test: Ran out of memory\n");
}
#endif

TEST(dlflist, gives_what_came_back_last) {
    dl *a = dlalloc();
    dl *b = dlalloc();
    EXPECT_EQ(dlflist(a), nullptr);
    EXPECT_EQ(dlflist(b), nullptr);
    EXPECT_EQ(dlflist(nullptr), b);
    EXPECT_EQ(dlflist(nullptr), a);
}

TEST(dlinsert, puts_nodes_at_the_front) {
    dl *head = nullptr;
    EXPECT_EQ(dlinsert(&head, node_of("a")), &head);
    EXPECT_EQ(texts_of(&head), "a");
    EXPECT_EQ(dlinsert(&head, node_of("b")), &head);
    EXPECT_EQ(texts_of(&head), "ba");
}

TEST(dlinsert, in_front_of_any_node_through_its_back_link) {
    dl *head = nullptr;
    dl *a = node_of("a");
    dlinsert(&head, a);
    dlinsert(&head, node_of("b"));
    dlinsert(a->back, node_of("c"));
    EXPECT_EQ(texts_of(&head), "bca");
}

TEST(dldelete, unlinks_and_gives_the_next) {
    dl *head = nullptr;
    dl *a = node_of("a");
    dl *b = node_of("b");
    dl *c = node_of("c");
    for (dl *node : {c, b, a})
        dlinsert(&head, node);
    EXPECT_EQ(dldelete(b), c);
    EXPECT_EQ(texts_of(&head), "ac");
    EXPECT_EQ(dldelete(c), nullptr);
    EXPECT_EQ(texts_of(&head), "a");
    EXPECT_EQ(dldelete(a), nullptr);
    EXPECT_EQ(head, nullptr);
}

TEST(dldelete, the_first_node_inserted_leaves_the_other_at_the_head) {
    dl *head = nullptr;
    dl *first = node_of("1");
    dlinsert(&head, first);
    dlinsert(&head, node_of("2"));
    dldelete(first);
    EXPECT_EQ(texts_of(&head), "2");
    EXPECT_EQ(head->back, &head);
}

TEST(dldelete, releases_nothing) {
    dl *head = nullptr;
    dl *node = node_of("still here");
    dlinsert(&head, node);
    dldelete(node);
    EXPECT_STREQ(node->text.buffer, "still here");
}

TEST(dlinsert, any_sequence_keeps_the_links) {
    std::mt19937 random(4);
    dl *head = nullptr;
    std::list<std::string> model;
    for (int step = 0; step < 2000; step++) {
        size_t count = model.size();
        size_t at = random() % (count + 1);
        dl **link = &head;
        auto place = model.begin();
        for (size_t i = 0; i < at; i++, place++)
            link = &(*link)->next;
        if (random() % 2 == 0 || at == count) {
            std::string text = std::to_string(step % 10);
            dlinsert(link, node_of(text.c_str()));
            model.insert(place, text);
        } else {
            dl *node = *link;
            dldelete(node);
            dlfree(node);
            model.erase(place);
        }
        std::string expected;
        for (const std::string &text : model)
            expected += text;
        ASSERT_EQ(texts_of(&head), expected);
    }
}

}  // namespace
