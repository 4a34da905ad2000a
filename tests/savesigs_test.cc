// savesigs_test.cc: interrupt and termination around a command.
#include "support/child.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <tovan/wait4pid.h>

namespace {

using disposition = void (*)(int);

volatile int handled = 0;

void count(int) {
    handled = handled + 1;
}

void other(int) {
}

disposition in_force(int number) {
    struct sigaction now = {};
    sigaction(number, nullptr, &now);
    return now.sa_handler;
}

int flags_in_force(int number) {
    struct sigaction now = {};
    sigaction(number, nullptr, &now);
    return now.sa_flags;
}

void expect_pair(disposition interrupt, disposition termination,
                 const char *when) {
    EXPECT_EQ(in_force(SIGINT), interrupt) << when;
    EXPECT_EQ(in_force(SIGTERM), termination) << when;
}

class savesigs_test : public testing::Test {
  protected:
    void SetUp() override {
        signal(SIGINT, count);
        signal(SIGTERM, SIG_DFL);
    }
};

TEST_F(savesigs_test, an_unrecorded_slot_changes_nothing) {
    for (int slot : {0, 1}) {
        for (int operation : {-1, 1, 7, -2}) {
            savesigs(slot, operation);
            expect_pair(count, SIG_DFL, "unrecorded");
        }
    }
}

TEST_F(savesigs_test, recording_changes_nothing_in_force) {
    savesigs(0, 0);
    expect_pair(count, SIG_DFL, "recorded");
}

TEST_F(savesigs_test, minus_one_ignores_and_others_restore) {
    for (int slot : {0, 1}) {
        savesigs(slot, 0);
        for (int restore : {1, 2, -2}) {
            savesigs(slot, -1);
            expect_pair(SIG_IGN, SIG_IGN, "ignoring");
            savesigs(slot, restore);
            expect_pair(count, SIG_DFL, "restored");
        }
    }
}

TEST_F(savesigs_test, slots_are_independent) {
    savesigs(0, 0);
    signal(SIGINT, SIG_IGN);
    signal(SIGTERM, other);
    savesigs(1, 0);
    savesigs(0, 1);
    expect_pair(count, SIG_DFL, "slot 0");
    savesigs(1, 1);
    expect_pair(SIG_IGN, other, "slot 1");
}

TEST_F(savesigs_test, recording_again_replaces_the_record) {
    savesigs(0, 0);
    signal(SIGINT, other);
    savesigs(0, 0);
    savesigs(0, -1);
    savesigs(0, 1);
    expect_pair(other, SIG_DFL, "second record");
}

TEST_F(savesigs_test, handlers_come_back_with_system_v_semantics) {
    savesigs(0, 0);
    EXPECT_EQ(flags_in_force(SIGINT) & SA_RESTART, 0);
    raise(SIGINT);
    EXPECT_EQ(handled, 1);
    EXPECT_EQ(in_force(SIGINT), SIG_DFL) << "reset when it runs";
    savesigs(0, 1);
    EXPECT_EQ(in_force(SIGINT), count);
    raise(SIGINT);
    EXPECT_EQ(handled, 2);
}

bool blocked_inside = true;

void look_at_mask(int number) {
    sigset_t mask;
    sigprocmask(SIG_BLOCK, nullptr, &mask);
    blocked_inside = sigismember(&mask, number) == 1;
}

TEST_F(savesigs_test, a_handler_that_came_back_may_be_interrupted) {
    signal(SIGTERM, look_at_mask);
    savesigs(1, 0);
    raise(SIGTERM);
    EXPECT_FALSE(blocked_inside);
}

TEST_F(savesigs_test, an_ignored_interrupt_does_not_end_the_process) {
    support::outcome end = support::in_child([] {
        signal(SIGINT, SIG_DFL);
        savesigs(0, 0);
        savesigs(0, -1);
        raise(SIGINT);
        raise(SIGTERM);
        savesigs(0, 1);
        raise(SIGINT);
    });
    EXPECT_EQ(end.signal, SIGINT);
}

}  // namespace
