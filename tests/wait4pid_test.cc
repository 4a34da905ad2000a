// wait4pid_test.cc: waiting for one child among several.
#include <dlfcn.h>
#include <errno.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <tovan/wait4pid.h>
#include <unistd.h>
#include <deque>
#include <vector>

namespace {

// What the replaced wait() and waitpid() answer while there is something in
// it; then the system answers.
struct answer {
    pid_t pid;
    int status_or_errno;
};
std::deque<answer> script;
int calls = 0;

pid_t next_answer(int *status) {
    answer next = script.front();
    script.pop_front();
    if (next.pid == -1) {
        errno = next.status_or_errno;
        return -1;
    }
    if (status != nullptr) *status = next.status_or_errno;
    return next.pid;
}

template <typename Function>
Function *original(const char *name) {
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" pid_t wait(int *status) {
    calls++;
    if (!script.empty()) return next_answer(status);
    return original<pid_t(int *)>("wait")(status);
}

extern "C" pid_t waitpid(pid_t pid, int *status, int options) {
    calls++;
    if (!script.empty()) return next_answer(status);
    return original<pid_t(pid_t, int *, int)>("waitpid")(pid, status, options);
}

namespace {

pid_t child_that_exits_with(int status) {
    pid_t child = fork();
    if (child == 0) _exit(status);
    siginfo_t info;
    waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT);
    return child;
}

// A record of the mourning list for each answer but the last.
void reap_past(std::vector<answer> answers) {
    pid_t last = answers.back().pid;
    script.assign(answers.begin(), answers.end());
    int status;
    ASSERT_EQ(wait4pid(last, &status), last);
    ASSERT_TRUE(script.empty());
    calls = 0;
}

// Each test starts with nobody in mourning.
class waitforpid_test : public testing::Test {
  protected:
    void TearDown() override {
        while (wait4pid(-1, nullptr) != -1)
            continue;
    }
};
class wait4pid_test : public waitforpid_test {};

TEST_F(waitforpid_test, gives_the_status_of_that_child) {
    pid_t first = child_that_exits_with(3);
    pid_t second = child_that_exits_with(4);
    int status = -1;
    EXPECT_EQ(waitforpid(second, &status), second);
    EXPECT_EQ(WEXITSTATUS(status), 4);
    EXPECT_EQ(waitforpid(first, &status), first);
    EXPECT_EQ(WEXITSTATUS(status), 3);
}

TEST_F(waitforpid_test, without_simulation_leaves_the_other_children) {
    pid_t first = child_that_exits_with(3);
    pid_t second = child_that_exits_with(4);
    EXPECT_EQ(waitforpid(second, nullptr), second);
    EXPECT_EQ(waitpid(first, nullptr, 0), first);
}

TEST_F(waitforpid_test, waits_on_after_interruptions) {
    for (bool simulated : {false, true}) {
        if (simulated) simulate_waitpid();
        script = {{-1, EINTR}, {-1, 85}, {-1, EINTR}, {77, 0x500}};
        int status = -1;
        EXPECT_EQ(waitforpid(77, &status), 77);
        EXPECT_EQ(status, 0x500);
    }
}

TEST_F(waitforpid_test, gives_other_failures_back) {
    for (bool simulated : {false, true}) {
        if (simulated) simulate_waitpid();
        int status = 12;
        EXPECT_EQ(waitforpid(getpid(), &status), -1);
        EXPECT_EQ(errno, ECHILD);
        EXPECT_EQ(status, 12);
    }
}

TEST_F(waitforpid_test, simulated_waits_keep_the_other_children) {
    simulate_waitpid();
    pid_t first = child_that_exits_with(3);
    pid_t second = child_that_exits_with(4);
    int status = -1;
    EXPECT_EQ(waitforpid(second, &status), second);
    EXPECT_EQ(WEXITSTATUS(status), 4);
    EXPECT_EQ(waitpid(first, &status, 0), -1) << "reaped on the way";
    EXPECT_EQ(waitforpid(first, &status), first);
    EXPECT_EQ(WEXITSTATUS(status), 3);
}

TEST_F(wait4pid_test, a_kept_child_is_returned_without_a_system_call) {
    pid_t early = child_that_exits_with(5);
    pid_t late = child_that_exits_with(6);
    int status = -1;
    ASSERT_EQ(wait4pid(late, &status), late);
    EXPECT_EQ(WEXITSTATUS(status), 6);
    calls = 0;
    EXPECT_EQ(wait4pid(early, &status), early);
    EXPECT_EQ(WEXITSTATUS(status), 5);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(wait4pid(early, &status), -1) << "a child is given once";
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(wait4pid_test, any_child_takes_the_newest_one_kept) {
    reap_past({{11, 1}, {12, 2}, {13, 3}, {14, 4}});
    int status = -1;
    EXPECT_EQ(wait4pid(12, &status), 12);
    EXPECT_EQ(status, 2);
    EXPECT_EQ(wait4pid(-1, &status), 13);
    EXPECT_EQ(status, 3);
    EXPECT_EQ(wait4pid(-1, &status), 11);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(calls, 0);
}

TEST_F(wait4pid_test, any_child_waits_when_none_is_kept) {
    pid_t child = child_that_exits_with(7);
    int status = -1;
    EXPECT_EQ(wait4pid(-1, &status), child);
    EXPECT_EQ(WEXITSTATUS(status), 7);
    EXPECT_EQ(wait4pid(-1, &status), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(wait4pid_test, the_newer_of_two_records_of_one_number_comes_first) {
    reap_past({{11, 1}, {12, 2}, {11, 3}, {14, 4}});
    int status = -1;
    EXPECT_EQ(wait4pid(11, &status), 11);
    EXPECT_EQ(status, 3);
    EXPECT_EQ(wait4pid(-1, &status), 12);
    EXPECT_EQ(wait4pid(11, &status), 11);
    EXPECT_EQ(status, 1);
}

TEST_F(wait4pid_test, the_status_may_be_null) {
    reap_past({{11, 1}, {14, 4}});
    EXPECT_EQ(wait4pid(11, nullptr), 11);
    script = {{15, 1}};
    EXPECT_EQ(wait4pid(15, nullptr), 15);
    script = {{16, 1}};
    EXPECT_EQ(wait4pid(-1, nullptr), 16);
}

TEST_F(wait4pid_test,
       a_failed_wait_keeps_what_was_reaped_and_leaves_the_status) {
    script = {{11, 1}, {-1, EINTR}};
    int status = 99;
    EXPECT_EQ(wait4pid(20, &status), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(status, 99);
    EXPECT_EQ(wait4pid(11, &status), 11);
    EXPECT_EQ(status, 1);
}

TEST_F(wait4pid_test, other_negative_numbers_name_no_group) {
    pid_t child = child_that_exits_with(8);
    int status = 0;
    EXPECT_EQ(wait4pid(-5, &status), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(wait4pid(0, &status), -1);
    EXPECT_EQ(wait4pid(child, &status), child) << "reaped on the way, kept";
    EXPECT_EQ(WEXITSTATUS(status), 8);
}

TEST_F(wait4pid_test, keeps_any_number_of_children_in_order) {
    constexpr pid_t count = 1000;
    std::vector<answer> answers;
    for (pid_t pid = 1; pid <= count; pid++) {
        // Many a number shares its low bits with others.
        answers.push_back({pid % 300 * 256 + 10, pid});
    }
    answers.push_back({5, 0});
    reap_past(answers);
    answers.pop_back();
    // Against a plain list: every third time by number, else the newest.
    for (int step = 0; !answers.empty(); step++) {
        auto expected = answers.end() - 1;
        pid_t asked = -1;
        if (step % 3 == 0) {
            asked = answers[answers.size() / 2].pid;
            while (expected->pid != asked)
                --expected;
        }
        int status = -1;
        ASSERT_EQ(wait4pid(asked, &status), expected->pid) << step;
        ASSERT_EQ(status, expected->status_or_errno) << step;
        answers.erase(expected);
    }
    EXPECT_EQ(calls, 0);
}

}  // namespace
