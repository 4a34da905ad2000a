// execcmmd_test.cc: becoming a command, candidate by candidate.
#include "support/child.h"
#include "support/program.h"
#include "support/tree.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <tovan/execstr.h>
#include <unistd.h>
#include <map>
#include <vector>

namespace {

// While `refusals` is set, execv() says on standard error what it is asked
// to run, and fails with the file's number there, or ENOENT.
const std::map<std::string, int> *refusals = nullptr;

// sleep() says how long, and waits for nothing.
void (*when_asleep)() = nullptr;

}  // namespace

extern "C" int execv(const char *path, char *const *argv) noexcept {
    if (refusals == nullptr) return execve(path, argv, environ);
    fprintf(stderr, "<%s", path);
    for (; *argv != nullptr; argv++)
        fprintf(stderr, " %s", *argv);
    fputs(">\n", stderr);
    auto found = refusals->find(path);
    errno = found == refusals->end() ? ENOENT : found->second;
    return -1;
}

extern "C" unsigned sleep(unsigned seconds) {
    fprintf(stderr, "sleep %u\n", seconds);
    if (when_asleep != nullptr) when_asleep();
    return 0;
}

namespace {

[[noreturn]] void become(std::vector<std::string> words) {
    std::vector<char *> argv{nullptr};
    for (std::string &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    execcmmd(0, 1, 2, argv.data() + 1);
}

// What becoming "tool a" says when candidates are refused like this.
std::string said(const std::string &path, const std::string &name,
                 const std::map<std::string, int> &reasons) {
    support::outcome end = support::in_child([&] {
        setenv("PATH", path.c_str(), 1);
        refusals = &reasons;
        become({name, "a"});
    });
    EXPECT_EQ(end.exit_status, 255);
    return end.err;
}

TEST(tryfile, forms_one_candidate_after_another) {
    dy candidate = {};
    const char *path = "/bin::rel:/x/";
    std::vector<std::string> all;
    while (path != nullptr) {
        path = tryfile(path, "name", &candidate);
        all.push_back(candidate.buffer);
        EXPECT_EQ(candidate.length, static_cast<int>(all.back().size()));
    }
    EXPECT_EQ(all, (std::vector<std::string>{"/bin/name", "name", "rel/name",
                                             "/x//name"}));
    free(candidate.buffer);
}

TEST(tryfile, ends_of_paths) {
    const struct {
        const char *path;
        std::vector<std::string> candidates;
    } rows[] = {
        {"", {"n"}},          {":", {"n", "n"}}, {"a:", {"a/n", "n"}},
        {":a", {"n", "a/n"}}, {"a", {"a/n"}},
    };
    for (const auto &row : rows) {
        dy candidate = {};
        std::vector<std::string> all;
        for (const char *path = row.path; path != nullptr;) {
            path = tryfile(path, "n", &candidate);
            all.push_back(candidate.buffer);
        }
        EXPECT_EQ(all, row.candidates) << row.path;
        free(candidate.buffer);
    }
}

TEST(getpath, is_read_once) {
    setenv("PATH", "/first", 1);
    const char *path = getpath();
    EXPECT_STREQ(path, "/first");
    setenv("PATH", "/second", 1);
    EXPECT_EQ(getpath(), path);
    EXPECT_STREQ(path, "/first");
}

TEST(getpath, has_a_default_for_an_unset_path_only) {
    EXPECT_FATAL(
        {
            unsetenv("PATH");
            fputs(getpath(), stderr);
        },
        0, "/bin:/usr/bin:/usr/X11R6/bin");
    EXPECT_FATAL(
        {
            setenv("PATH", "", 1);
            fprintf(stderr, "<%s>", getpath());
        },
        0, "<>");
}

TEST(execcmmd, replaces_the_process_after_a_flush) {
    support::outcome end = support::in_child([] {
        printf("before ");
        become({"printf", "%s", "after"});
    });
    EXPECT_EQ(end.out, "before after");
    EXPECT_EQ(end.exit_status, 0);
}

TEST(execcmmd, tries_each_element) {
    EXPECT_EQ(said("/a::b", "tool", {}),
              "</a/tool tool a>\n<tool tool a>\n<b/tool tool a>\n"
              "test: tool: not found\n");
}

TEST(execcmmd, a_name_with_a_slash_is_tried_as_it_is) {
    EXPECT_EQ(said("/a:/b", "./tool", {}),
              "<./tool ./tool a>\ntest: ./tool: not found\n");
    EXPECT_EQ(said("/a:/b", "x/tool", {}),
              "<x/tool x/tool a>\ntest: x/tool: not found\n");
}

TEST(execcmmd, the_most_telling_refusal_is_reported) {
    const struct {
        int first;
        int second;
        const char *message;
    } rows[] = {
        {ENOENT, ENOENT, "test: tool: not found\n"},
        {ENOTDIR, ELOOP, "test: tool: not found\n"},
        {EIO, ENAMETOOLONG, "test: tool: not found\n"},
        {EACCES, ENOENT, "test: tool: file not executable\n"},
        {ENOENT, EACCES, "test: tool: file not executable\n"},
        {E2BIG, ENOENT, "test: tool: arg list too long\n"},
        {EACCES, E2BIG, "test: tool: arg list too long\n"},
        {E2BIG, EACCES, "test: tool: arg list too long\n"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(
            said("a:b", "tool",
                 {{"a/tool", row.first}, {"b/tool", row.second}}),
            std::string("<a/tool tool a>\n<b/tool tool a>\n") + row.message);
    }
}

TEST(execcmmd, no_memory_is_fatal_at_once) {
    EXPECT_EQ(said("a:b", "tool", {{"a/tool", ENOMEM}}),
              "<a/tool tool a>\ntest: tool: too large\n");
}

TEST(execcmmd, a_busy_file_is_tried_for_210_seconds) {
    std::string expected = "<a/tool tool a>\n";
    for (int seconds = 10; seconds <= 60; seconds += 10) {
        expected += "sleep " + std::to_string(seconds) + "\n<a/tool tool a>\n";
    }
    EXPECT_EQ(said("a:b", "tool", {{"a/tool", ETXTBSY}}),
              expected + "test: tool: text busy\n");
}

TEST(execcmmd, a_format_error_asks_the_shell) {
    setenv("_T_binsh", "/the/shell", 1);
    EXPECT_EQ(said("a:b:c", "tool", {{"b/tool", ENOEXEC}}),
              "<a/tool tool a>\n<b/tool tool a>\n"
              "</the/shell /the/shell b/tool a>\n"
              "test: /the/shell: No shell! See errNoshell(x-vopmisc)\n");
}

TEST(execcmmd, descriptors_are_put_in_place) {
    support::write_file("in", "text");
    support::outcome end = support::in_child([] {
        static char cat[] = "cat";
        char *argv[] = {nullptr, cat, nullptr};
        int in = open("in", O_RDONLY);
        int out = open("out", O_WRONLY | O_CREAT, 0600);
        execcmmd(in, out, 2, argv + 1);
    });
    EXPECT_EQ(end.exit_status, 0);
    EXPECT_EQ(support::read_file("out"), "text");
}

// Who holds the busy program open, until when_asleep makes an end of it.
pid_t holder = -1;

void hold_open(const char *path) {
    int gate[2];
    ASSERT_EQ(pipe(gate), 0);
    holder = fork();
    if (holder == 0) {
        if (open(path, O_WRONLY) == -1) _exit(1);
        close(gate[1]);
        for (;;)
            pause();
    }
    close(gate[1]);
    char byte;
    ASSERT_EQ(read(gate[0], &byte, 1), 0);
    close(gate[0]);
}

// Dead, and nothing open any more.
bool is_zombie(pid_t pid) {
    std::string status = "/proc/" + std::to_string(pid) + "/status";
    return support::read_file(status).find("State:\tZ") != std::string::npos;
}

void let_go() {
    kill(holder, SIGKILL);
    while (!is_zombie(holder))
        sched_yield();
}

TEST(forkcmmd, a_busy_program_is_waited_for) {
    support::write_script("tool", "exit 6");
    hold_open("tool");
    when_asleep = let_go;
    static char name[] = "./tool";
    char *argv[] = {nullptr, name, nullptr};
    int status = -1;
    EXPECT_EQ(support::stderr_of([&] { status = forkcmmd(0, 1, 2, argv + 1); }),
              "sleep 10\n");
    EXPECT_EQ(WEXITSTATUS(status), 6);
    waitpid(holder, nullptr, 0);
}

TEST(forkcmmd, refusals_in_the_shared_child_are_told_once_more) {
    const std::map<std::string, int> reasons{{"a/tool", ENOMEM}};
    setenv("PATH", "a", 1);
    refusals = &reasons;
    static char name[] = "tool";
    char *argv[] = {nullptr, name, nullptr};
    int status = -1;
    std::string text =
        support::stderr_of([&] { status = forkcmmd(0, 1, 2, argv + 1); });
    refusals = nullptr;
    EXPECT_EQ(text, "<a/tool tool>\n<a/tool tool>\ntest: tool: too large\n");
    EXPECT_EQ(WEXITSTATUS(status), 255);
}

}  // namespace
