// befreed_test.cc: blocks that are released together.
#include "support/child.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <tovan/chkalloc.h>

namespace {

// The blocks released while `is_recording`, in order, without the help of
// the heap that is being watched.
bool is_recording = false;
const volatile void *released[100];
int released_count = 0;

void record(const volatile void *block) {
    if (is_recording && block != nullptr && released_count < 100)
        released[released_count++] = block;
}

}  // namespace

#ifdef __SANITIZE_ADDRESS__
extern "C" void __sanitizer_free_hook(const volatile void *block);
extern "C" void __sanitizer_free_hook(const volatile void *block) {
    record(block);
}
#else
extern "C" void __libc_free(void *block);
extern "C" void free(void *block) {
    record(block);
    __libc_free(block);
}
#endif

namespace {

void release_all() {
    is_recording = true;
    befreed();
    is_recording = false;
}

// Where the block stands among the released ones, -1 when it does not.
int place_of(const void *block) {
    for (int i = 0; i < released_count; i++) {
        if (released[i] == block) return i;
    }
    return -1;
}

// The registry serves once a process: each case has its own.
void expect_true_in_child(const std::function<bool()> &body) {
    support::outcome end =
        support::in_child([&] { puts(body() ? "true" : "false"); });
    EXPECT_EQ(end.out, "true\n");
    EXPECT_EQ(end.exit_status, 0);
    EXPECT_EQ(end.err, "");
}

TEST(befreed, releases_blocks_in_order_and_then_their_list) {
    expect_true_in_child([] {
        void *blocks[3];
        for (void *&block : blocks)
            tobefreed(block = chkalloc(8));
        release_all();
        return place_of(blocks[0]) == 0 && place_of(blocks[1]) == 1 &&
               place_of(blocks[2]) == 2 && released_count == 4;
    });
}

TEST(befreed, releases_variables_newest_first_and_before_the_blocks) {
    expect_true_in_child([] {
        void *block = chkalloc(8);
        tobefreed(block);
        char *first = savestr("first");
        int *second = static_cast<int *>(chkalloc(sizeof *second));
        ptobefreed(&first);
        ptobefreed(&second);
        release_all();
        return place_of(second) == 0 && place_of(first) == 1 &&
               place_of(block) == 3 && released_count == 5;
    });
}

TEST(ptobefreed, releases_what_the_variable_holds_in_the_end) {
    expect_true_in_child([] {
        char *text = savestr("small");
        ptobefreed(&text);
        char *before = text;
        text = static_cast<char *>(chkalloc(100000));
        free(before);
        release_all();
        return place_of(text) == 0;
    });
}

TEST(ptobefreed, a_null_variable_is_passed_over_and_none_is_reset) {
    expect_true_in_child([] {
        char *none = nullptr;
        char *some = savestr("x");
        char *const kept = some;
        ptobefreed(&none);
        ptobefreed(&some);
        release_all();
        return place_of(kept) == 0 && released_count == 2 && some == kept;
    });
}

TEST(befreed, without_registrations_does_nothing) {
    expect_true_in_child([] {
        release_all();
        return released_count == 0;
    });
}

TEST(befreed, stops_at_a_null_block) {
    expect_true_in_child([] {
        void *first = chkalloc(8);
        void *behind = chkalloc(8);
        tobefreed(first);
        tobefreed(nullptr);
        tobefreed(behind);
        release_all();
        bool is_kept = place_of(behind) == -1;
        free(behind);
        return is_kept && place_of(first) == 0 && released_count == 2;
    });
}

TEST(tobefreed, lists_grow_past_their_first_capacity) {
    expect_true_in_child([] {
        void *blocks[50];
        for (void *&block : blocks)
            tobefreed(block = chkalloc(8));
        release_all();
        for (int i = 0; i < 50; i++) {
            if (place_of(blocks[i]) != i) return false;
        }
        return released_count == 51;
    });
}

}  // namespace
