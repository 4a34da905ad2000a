// command_fault_test.cc: commands when calls of the system fail or are
// interrupted, in the process and in its children.
#include "support/child.h"
#include "support/faults/faults.h"
#include "support/program.h"
#include "support/tree.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <tovan/tovan.h>
#include <unistd.h>
#include <string>
#include <vector>

namespace {

using support::always;
using support::no_fault;
using support::text_of;

// Runs a program by its name along PATH, and prints the wait status.
void run_name() {
    char line[] = "say yes";
    int status = execstr(0, 1, 2, 1, 0, line);
    printf("%#x", static_cast<unsigned>(status));
}

void run_shell() {
    int status = execstr(0, 1, 2, 1, 0, "say yes | cat");
    printf("%#x", static_cast<unsigned>(status));
}

void install_say() {
    support::install_program("say", "echo \"$1\"\n");
}

TEST(command_fault, interruptions_are_not_seen) {
    install_say();
    for (void (*run)() : {run_name, run_shell}) {
        support::check_faults(run,
                              {{no_fault, "yes\n0", "", 0},
                               {{"waitpid", EINTR, 1, 5}, "yes\n0", "", 0}});
    }
}

TEST(command_fault, a_child_that_shares_memory_may_be_refused) {
    install_say();
    for (int error : {EAGAIN, ENOMEM, ENOSYS})
        support::check_faults(run_name, {{{"vfork", error}, "yes\n0", "", 0}});
}

TEST(command_fault, no_child_at_all_is_fatal) {
    install_say();
    for (int error : {EAGAIN, ENOMEM}) {
        support::check_faults(
            [error] {
                support::inject({"fork", error});
                run_name();
            },
            {{{"vfork", error},
              "",
              "test: forkcmmd() fork(2): " + text_of(error) + "\n",
              255}});
    }
}

TEST(command_fault, a_child_that_cannot_be_waited_for_has_not_succeeded) {
    install_say();
    support::check_faults(run_name,
                          {{{"waitpid", ECHILD}, "yes\n0xffffffff", "", 0}},
                          [](support::outcome *end) {
                              // The child may write after its parent, or later.
                              if (end->out.starts_with("0xffffffff"))
                                  end->out = "yes\n0xffffffff";
                          });
}

// The reasons that keep a program from running, as the child tells them.
TEST(command_fault, programs_that_cannot_be_run) {
    install_say();
    struct row {
        int error;
        std::string message;
    };
    for (const row &r : std::vector<row>{
             {ENOENT, "say: not found"},
             {ENOTDIR, "say: not found"},
             {EIO, "say: not found"},
             {ELOOP, "say: not found"},
             {ENAMETOOLONG, "say: not found"},
             {EMFILE, "say: not found"},
             {EACCES, "say: file not executable"},
             {E2BIG, "say: arg list too long"},
             {ENOMEM, "say: too large"},
             {ENOEXEC, "/bin/sh: No shell! See errNoshell(x-vopmisc)"},
         }) {
        support::check_faults(run_name, {{{"execv", r.error, 1, always},
                                          "0xff00",
                                          "test: " + r.message + "\n",
                                          0}});
    }
}

// PATH has three directories: the program is in the first.
TEST(command_fault, the_next_candidate_is_tried) {
    install_say();
    for (int error : {ENOENT, EACCES, ENOTDIR, EIO}) {
        support::outcome end = support::with_fault({"execv", error}, run_name);
        EXPECT_NE(end.out, "");
        EXPECT_EQ(end.exit_status, 0);
    }
}

TEST(command_fault, descriptors_that_cannot_be_put_in_place) {
    install_say();
    auto run = [] {
        int pipe_ends[2];
        if (pipe(pipe_ends) != 0) abort();
        int status = execstr(pipe_ends[0], 1, 0, 1, 0, "say yes");
        printf("%#x", static_cast<unsigned>(status));
        close(pipe_ends[0]);
        close(pipe_ends[1]);
    };
    for (int error : {EMFILE, ENFILE}) {
        support::check_faults(
            run, {{{"dup", error, 1, always},
                   "0xff00",
                   "test: forkcmmd() dup(2): " + text_of(error) + "\n",
                   0},
                  {{"fcntl", error, 1, always},
                   "0xff00",
                   "test: forkcmmd() dup2(2): " + text_of(error) + "\n",
                   0}});
    }
}

TEST(command_fault, signals_that_cannot_be_changed) {
    install_say();
    support::check_faults(
        run_name, {{{"sigaction", EINVAL, 1, always}, "yes\n0", "", 0}});
}

TEST(command_fault, the_word_dup2) {
    auto copy = [] {
        int result = dup2(1, 9);
        printf("%d %s", result, result == -1 ? strerror(errno) : "");
        close(9);
    };
    for (int error : {EMFILE, EBADF, EINVAL}) {
        support::check_faults(
            copy, {{{"fcntl", error}, "-1 " + text_of(error), "", 0}});
    }
}

// ---- directories by command ----------------------------------------------

void make_directory() {
    struct stat status;
    int result = makedir("new", 0755, 1, &status);
    printf("%d %s", result, result == -1 ? strerror(errno) : "");
}

TEST(command_fault, directories) {
    auto make_anew = [] {
        rmdir("new");
        make_directory();
    };
    support::check_faults(make_anew, {{no_fault, "0 ", "", 0},
                                      {{"waitpid", EINTR, 1, 3}, "0 ", "", 0},
                                      {{"chmod", EPERM}, "0 ", "", 0},
                                      {{"chmod", EIO}, "0 ", "", 0},
                                      {{"vfork", EAGAIN}, "0 ", "", 0}});
    for (int error : {EACCES, EIO, ELOOP, ENAMETOOLONG, ENOMEM}) {
        support::check_faults(
            make_anew,
            {{{"stat", error, 1, always}, "-1 " + text_of(error), "", 0}});
    }
    rmdir("new");
    support::check_faults(make_directory, {{{"execv", ENOENT, 1, always},
                                            "-1 " + text_of(ENOENT),
                                            "test: mkdir: not found\n",
                                            0}});
}

// ---- waiting -------------------------------------------------------------

TEST(command_fault, waiting) {
    auto wait_for_child = [] {
        pid_t child = fork();
        if (child == 0) _exit(3);
        int status = -1;
        pid_t reaped = waitforpid(child, &status);
        printf("%d %#x", reaped == child, static_cast<unsigned>(status));
    };
    support::check_faults(wait_for_child,
                          {{{"waitpid", EINTR, 1, 9}, "1 0x300", "", 0},
                           {{"waitpid", ECHILD}, "0 0xffffffff", "", 0},
                           {{"waitpid", EINVAL}, "0 0xffffffff", "", 0}});
    auto wait_by_simulation = [=] {
        simulate_waitpid();
        wait_for_child();
    };
    support::check_faults(wait_by_simulation,
                          {{{"wait", EINTR, 1, 9}, "1 0x300", "", 0},
                           {{"wait", ECHILD}, "0 0xffffffff", "", 0}});
    support::check_faults(
        [] {
            int status;
            pid_t reaped = zombie(&status);
            printf("%d %s", reaped, strerror(errno));
        },
        {{{"waitpid", ECHILD}, "-1 " + text_of(ECHILD), "", 0}});
}

}  // namespace
