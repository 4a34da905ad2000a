// chkalloc_test.cc: checked allocation and copies of strings.
#include "support/child.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <signal.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/chkalloc.h>

namespace {

constexpr size_t impossible = PTRDIFF_MAX;

void expect_out_of_memory(const std::function<void()> &request) {
    support::outcome end = support::in_child(request);
    EXPECT_EQ(end.signal, SIGABRT);
    // The sanitizers say something of their own before.
    EXPECT_TRUE(end.err.ends_with("test: Ran out of memory\n")) << end.err;
}

TEST(chkalloc, gives_a_block_that_can_be_freed) {
    void *block = chkalloc(100);
    memset(block, 1, 100);
    EXPECT_GE(malloc_usable_size(block), 100u);
    free(block);
}

TEST(chkalloc, nothing_is_a_block_too) {
    void *block = chkalloc(0);
    EXPECT_NE(block, nullptr);
    free(block);
}

TEST(chkalloc, ends_when_memory_ends) {
    expect_out_of_memory([] { chkalloc(impossible); });
}

TEST(chkrealloc, keeps_the_content) {
    char *block = static_cast<char *>(chkrealloc(nullptr, 4));
    strcpy(block, "abc");
    block = static_cast<char *>(chkrealloc(block, 100000));
    EXPECT_STREQ(block, "abc");
    free(block);
}

TEST(chkrealloc, nothing_is_a_block_too) {
    void *block = chkrealloc(chkalloc(10), 0);
    EXPECT_NE(block, nullptr);
    free(block);
}

TEST(chkrealloc, ends_when_memory_ends) {
    expect_out_of_memory([] { chkrealloc(nullptr, impossible); });
    expect_out_of_memory([] { chkrealloc(chkalloc(1), impossible); });
}

TEST(savestr, copies_text_and_terminator) {
    for (const char *text : {"", "a", "some text\n"}) {
        char *copy = savestr(text);
        EXPECT_STREQ(copy, text);
        EXPECT_NE(copy, text);
        free(copy);
    }
}

TEST(savenstr, copies_exactly_n_bytes) {
    char *copy = savenstr("abcdef", 3);
    EXPECT_STREQ(copy, "abc");
    free(copy);
    copy = savenstr("abcdef", 0);
    EXPECT_STREQ(copy, "");
    free(copy);
}

TEST(savenstr, does_not_stop_at_a_nul) {
    char *copy = savenstr("a\0b\0c", 4);
    EXPECT_EQ(memcmp(copy, "a\0b\0", 5), 0);
    free(copy);
}

TEST(savenstr, ends_when_memory_ends) {
    expect_out_of_memory([] { savenstr("", impossible); });
}

TEST(savenfree, moves_text_into_a_block_of_its_size) {
    char *large = static_cast<char *>(chkalloc(100000));
    strcpy(large, "small");
    char *exact = savenfree(large);
    EXPECT_STREQ(exact, "small");
    EXPECT_LT(malloc_usable_size(exact), 100u);
    free(exact);
}

}  // namespace
