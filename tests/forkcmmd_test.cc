// forkcmmd_test.cc: a command in a child.
#include "support/child.h"
#include "support/program.h"
#include "support/tree.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <tovan/errexit.h>
#include <tovan/execstr.h>
#include <tovan/wait4pid.h>
#include <unistd.h>
#include <vector>

namespace {

// Runs words on our own descriptors.
int run(std::vector<std::string> words, int in = 0, int out = 1, int err = 2) {
    std::vector<char *> argv{nullptr};
    for (std::string &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    return forkcmmd(in, out, err, argv.data() + 1);
}

int run_shell(const std::string &commands) {
    return run({"sh", "-c", commands});
}

int open_count() {
    int count = 0;
    DIR *folder = opendir("/proc/self/fd");
    while (readdir(folder) != nullptr)
        count++;
    closedir(folder);
    return count;
}

TEST(forkcmmd, gives_the_wait_status) {
    EXPECT_EQ(run({"true"}), 0);
    EXPECT_EQ(WEXITSTATUS(run({"false"})), 1);
    EXPECT_EQ(WEXITSTATUS(run_shell("exit 127")), 127);
    EXPECT_EQ(WEXITSTATUS(run_shell("exit 255")), 255);
    EXPECT_EQ(WTERMSIG(run_shell("kill -TERM $$")), SIGTERM);
}

TEST(forkcmmd, writes_out_what_is_buffered_first_and_once) {
    for (const char *name : {"true", "nowhere"}) {
        support::outcome end = support::in_child([&] {
            printf("before ");
            run({"printf", "command "});
            printf("between ");
            run({name});
            printf("after ");
        });
        EXPECT_EQ(end.out, "before command between after ") << name;
    }
}

TEST(forkcmmd, an_impossible_command_is_explained_by_its_child) {
    support::write_file("plain", "x");
    const struct {
        const char *name;
        const char *message;
    } rows[] = {
        {"nowhere", "test: nowhere: not found\n"},
        {"./nowhere", "test: ./nowhere: not found\n"},
        {"./plain", "test: ./plain: file not executable\n"},
        {"/", "test: /: file not executable\n"},
        {"plain/x", "test: plain/x: not found\n"},
    };
    for (const auto &row : rows) {
        int status = -1;
        EXPECT_EQ(support::stderr_of([&] { status = run({row.name}); }),
                  row.message);
        EXPECT_EQ(WEXITSTATUS(status), 255) << row.name;
    }
}

TEST(forkcmmd, the_exit_hook_runs_in_the_child_and_handlers_do_not) {
    support::outcome end = support::in_child([] {
        set_exit_rtn([](int status) { fprintf(stderr, "hook %d\n", status); });
        atexit([] { fputs("handler\n", stderr); });
        printf("kept");
        run({"nowhere"});
        exit(0);
    });
    EXPECT_EQ(end.err, "test: nowhere: not found\nhook -1\nhandler\n");
    EXPECT_EQ(end.out, "kept");
}

TEST(forkcmmd, a_hooks_output_in_the_child_is_not_lost) {
    support::outcome end = support::in_child([] {
        set_exit_rtn([](int) { printf("from the hook"); });
        run({"nowhere"});
    });
    EXPECT_EQ(end.out, "from the hook");
}

TEST(forkcmmd, bad_descriptors_are_explained_by_the_child) {
    int status = -1;
    EXPECT_EQ(support::stderr_of([&] { status = run({"true"}, 99); }),
              "test: forkcmmd() dup2(2): Bad file descriptor\n");
    EXPECT_EQ(WEXITSTATUS(status), 255);
}

TEST(forkcmmd, leaves_no_descriptor_open) {
    run({"true"});
    int before = open_count();
    run({"true"});
    support::stderr_of([] { run({"nowhere"}); });
    EXPECT_EQ(open_count(), before);
}

TEST(forkcmmd, the_command_has_the_three_and_what_we_left_open) {
    int file = open("/dev/null", O_RDWR);
    int other = fcntl(file, F_DUPFD, 70);
    std::string listing = support::stdout_of([&] {
        run_shell("for f in /proc/self/fd/*; do echo ${f##*/}; done");
        fflush(stdout);
    });
    EXPECT_NE(listing.find("70\n"), std::string::npos);
    listing = support::stdout_of([&] {
        run({"sh", "-c", "test -e /proc/self/fd/70 || echo closed"}, other);
    });
    EXPECT_EQ(listing, "closed\n") << "given as the input, closed above 2";
    EXPECT_NE(fcntl(other, F_GETFD), -1) << "it stays open here";
}

TEST(forkcmmd, reads_path_anew_until_getpath_keeps_it) {
    support::write_script("one/tool", "echo one");
    support::write_script("two/tool", "echo two");
    std::string rest = ":/usr/bin:/bin";
    auto tool = [] { return support::stdout_of([] { run({"tool"}); }); };
    setenv("PATH", ("one" + rest).c_str(), 1);
    EXPECT_EQ(tool(), "one\n");
    setenv("PATH", ("two" + rest).c_str(), 1);
    EXPECT_EQ(tool(), "two\n");
    getpath();
    setenv("PATH", ("one" + rest).c_str(), 1);
    EXPECT_EQ(tool(), "two\n");
}

TEST(forkcmmd, goes_on_along_the_path_as_exec_does) {
    support::make_folders("folder/tool");
    support::write_file("refused/tool", "x");
    support::write_script("good/tool", "echo good");
    setenv("PATH", "missing:folder:refused:good:/usr/bin:/bin", 1);
    EXPECT_EQ(support::stdout_of([] { run({"tool"}); }), "good\n");
    setenv("PATH", "missing:refused:folder", 1);
    EXPECT_EQ(support::stderr_of([] { run({"tool"}); }),
              "test: tool: file not executable\n");
}

TEST(forkcmmd, an_empty_path_element_tries_the_bare_name) {
    support::write_script("tool", "echo here");
    for (const char *path : {"", ":", "missing:", ":missing", "a::b"}) {
        setenv("PATH", path, 1);
        EXPECT_EQ(support::stdout_of([] { run({"tool"}); }), "here\n") << path;
    }
}

TEST(forkcmmd, a_script_without_interpreter_runs_by_the_shell) {
    support::write_program("bin/bare", "echo $# \"$0\" $1");
    setenv("PATH", "bin:/usr/bin:/bin", 1);
    EXPECT_EQ(support::stdout_of([] {
                  run({"bare", "x", "y"});
              }),
              "2 bin/bare x\n");
    setenv("_T_binsh", "/nowhere/sh", 1);
    EXPECT_EQ(support::stderr_of([] { run({"bare"}); }),
              "test: /nowhere/sh: No shell! See errNoshell(x-vopmisc)\n");
}

TEST(forkcmmd, a_path_of_1_mb_is_too_long_for_the_environment) {
    setenv("PATH", (std::string(1 << 20, 'x') + ":/bin").c_str(), 1);
    EXPECT_EQ(support::stderr_of([] { run({"true"}); }),
              "test: true: arg list too long\n");
}

TEST(forkcmmd, a_kept_path_of_1_mb_is_searched) {
    std::string path;
    while (path.size() < 1 << 20)
        path += "missing-folder-of-the-path:";
    setenv("PATH", (path + "/usr/bin:/bin").c_str(), 1);
    getpath();
    setenv("PATH", "/usr/bin:/bin", 1);
    EXPECT_EQ(run({"true"}), 0);
}

void ignore_it(int) {
}

// Runs cat, in a child of each kind: one that shares our memory, and a true
// copy, which a file in no executable format calls for.
int run_cat(bool copied, const std::string &file) {
    if (!copied) return run({"cat", file});
    support::write_program("bare", "\n");
    setenv("_T_binsh", "/bin/cat", 1);
    return run({"./bare", file});
}

// A line of the command's own status.
std::string status_line(bool copied, const std::string &name) {
    std::string status = support::stdout_of(
        [&] { EXPECT_EQ(run_cat(copied, "/proc/self/status"), 0); });
    size_t start = status.find(name + ":\t") + name.size() + 2;
    return status.substr(start, status.find('\n', start) - start);
}

// Whoever started the tests may have left signals ignored or blocked.
class forkcmmd_signals : public testing::Test {
  protected:
    void SetUp() override {
        for (int number = 1; number < NSIG; number++) {
            signal(number, SIG_DFL);
        }
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
    }
};

TEST_F(forkcmmd_signals, the_command_has_our_signal_mask) {
    for (bool copied : {false, true}) {
        sigset_t mask;
        sigemptyset(&mask);
        sigprocmask(SIG_SETMASK, &mask, nullptr);
        EXPECT_EQ(status_line(copied, "SigBlk"), "0000000000000000");
        sigaddset(&mask, SIGUSR2);
        sigprocmask(SIG_SETMASK, &mask, nullptr);
        EXPECT_EQ(status_line(copied, "SigBlk"), "0000000000000800");
        sigset_t now;
        sigprocmask(SIG_BLOCK, nullptr, &now);
        EXPECT_EQ(sigismember(&now, SIGUSR2), 1);
        EXPECT_EQ(sigismember(&now, SIGUSR1), 0) << "restored here";
    }
}

TEST_F(forkcmmd_signals, ignored_signals_stay_ignored_and_handlers_do_not) {
    signal(SIGUSR1, SIG_IGN);
    signal(SIGUSR2, ignore_it);
    for (bool copied : {false, true}) {
        EXPECT_EQ(status_line(copied, "SigIgn"), "0000000000000200");
        EXPECT_EQ(status_line(copied, "SigCgt"), "0000000000000000");
        struct sigaction now;
        sigaction(SIGUSR2, nullptr, &now);
        EXPECT_EQ(now.sa_handler, ignore_it) << "our handlers are ours";
    }
}

TEST(forkcmmd, registered_descriptors_are_closed_for_the_command) {
    int file = open("/dev/null", O_RDONLY);
    ASSERT_EQ(fcntl(file, F_DUPFD, 60), 60);
    for (bool copied : {false, true}) {
        closeonfork(1, 60);
        EXPECT_EQ(run_cat(copied, "/proc/self/fd/60"), 0);
        closeonfork(0, 60);
        std::string said = support::stderr_of([&] {
            EXPECT_EQ(WEXITSTATUS(run_cat(copied, "/proc/self/fd/60")), 1);
        });
        EXPECT_NE(said.find("No such file"), std::string::npos);
        EXPECT_NE(fcntl(60, F_GETFD), -1) << "it stays open here";
    }
}

bool interrupt_kills_us_during_a_command() {
    support::outcome end = support::in_child([] {
        signal(SIGINT, SIG_DFL);
        run_shell("kill -INT $PPID; sleep 0.05");
        _exit(0);
    });
    return end.signal == SIGINT;
}

TEST_F(forkcmmd_signals,
       interrupts_are_ignored_meanwhile_when_slot_0_is_recorded) {
    EXPECT_TRUE(interrupt_kills_us_during_a_command());
    savesigs(0, 0);
    EXPECT_FALSE(interrupt_kills_us_during_a_command());
    support::outcome end = support::in_child([] {
        run({"true"});
        raise(SIGINT);
    });
    EXPECT_EQ(end.signal, SIGINT) << "restored behind the command";
}

TEST_F(forkcmmd_signals, slot_1_is_restored_for_the_command) {
    signal(SIGINT, SIG_DFL);
    signal(SIGTERM, SIG_DFL);
    savesigs(1, 0);
    signal(SIGINT, SIG_IGN);
    signal(SIGTERM, SIG_IGN);
    for (bool copied : {false, true}) {
        EXPECT_EQ(status_line(copied, "SigIgn"), "0000000000000000");
        struct sigaction now;
        sigaction(SIGINT, nullptr, &now);
        EXPECT_EQ(now.sa_handler, SIG_IGN) << "not for us";
    }
}

TEST_F(forkcmmd_signals, without_slot_1_the_command_has_our_dispositions) {
    signal(SIGINT, SIG_IGN);
    for (bool copied : {false, true}) {
        EXPECT_EQ(status_line(copied, "SigIgn"), "0000000000000002");
    }
}

volatile int ended = 0;

TEST_F(forkcmmd_signals, signals_that_arrive_meanwhile_are_ours_alone) {
    signal(SIGCHLD, [](int) { ended = ended + 1; });
    EXPECT_EQ(run({"true"}), 0);
    EXPECT_GE(ended, 1);
}

TEST(forkcmmd, other_children_are_left_alone) {
    pid_t other = fork();
    if (other == 0) _exit(9);
    EXPECT_EQ(run({"true"}), 0);
    support::stderr_of([] { run({"nowhere"}); });
    int status = 0;
    EXPECT_EQ(waitpid(other, &status, 0), other);
    EXPECT_EQ(WEXITSTATUS(status), 9);
    EXPECT_EQ(waitpid(-1, &status, 0), -1) << "nobody is left over";
}

TEST(forkcmmd, simulated_waits_keep_other_children) {
    simulate_waitpid();
    pid_t other = fork();
    if (other == 0) _exit(9);
    siginfo_t info;
    waitid(P_PID, static_cast<id_t>(other), &info, WEXITED | WNOWAIT);
    EXPECT_EQ(WEXITSTATUS(run_shell("exit 4")), 4);
    int status = 0;
    EXPECT_EQ(waitforpid(other, &status), other);
    EXPECT_EQ(WEXITSTATUS(status), 9);
}

TEST_F(forkcmmd_signals, without_statuses_of_children_gives_minus_one) {
    signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(run({"true"}), -1);
}

// The limit does not bind root, which becomes somebody else.
void allow_no_process() {
    struct rlimit limit = {0, 0};
    setrlimit(RLIMIT_NPROC, &limit);
    if (geteuid() == 0 && setuid(65534) != 0) _exit(9);
}

TEST(forkcmmd, a_fork_that_fails_is_fatal) {
    EXPECT_FATAL(
        {
            allow_no_process();
            run({"true"});
        },
        255, "test: forkcmmd() fork(2): Resource temporarily unavailable\n");
}

TEST(forkcmmd, our_memory_is_as_it_was) {
    std::vector<std::string> words{"sh", "-c", "exit 3"};
    std::vector<char *> argv{nullptr};
    for (std::string &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    std::vector<char *> before = argv;
    setenv("TOVAN_X", "kept", 1);
    forkcmmd(0, 1, 2, argv.data() + 1);
    support::write_program("bare", "exit 0");
    words[0] = "./bare";
    argv[1] = words[0].data();
    before[1] = argv[1];
    forkcmmd(0, 1, 2, argv.data() + 1);
    EXPECT_EQ(argv, before) << "also when the shell had to help";
    EXPECT_STREQ(getenv("TOVAN_X"), "kept");
}

}  // namespace
