// sweep_fault_test.cc: whole tasks, in which each request for memory and each
// call of the system goes wrong once.
//
// A task that cannot do without the memory ends as out of memory ends it, one
// that can gives the same result. Interruptions and short transfers change
// nothing. Another failure is told, or the result is one without what failed.
#include "support/ar_image.h"
#include "support/child.h"
#include "support/faults/faults.h"
#include "support/heap_image.h"
#include "support/program.h"
#include "support/tree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tovan/tovan.h>
#include <unistd.h>
#include <functional>
#include <string>

namespace {

using support::always;
using support::no_fault;

constexpr int most_calls = 400;

// The process, or a child of it that was to become a command: that one's end
// may have consequences.
bool is_out_of_memory(const support::outcome &end) {
    bool is_child =
        end.exit_status == 255 || end.out.find("134") != std::string::npos;
    return end.err.starts_with("test: Ran out of memory\n") &&
           (end.signal == SIGABRT || is_child);
}

// Runs `body` with the fault at the first call, the second and so on, until
// there is none of that number.
//   result    how many calls there were
int sweep(support::fault fault, const std::function<void()> &body,
          const std::function<void(const support::outcome &)> &check) {
    for (fault.first = 1; fault.first <= most_calls; fault.first++) {
        SCOPED_TRACE(support::name_of(fault));
        support::outcome end = support::with_fault(fault, body);
        check(end);
        if (!support::was_met()) return fault.first - 1;
    }
    ADD_FAILURE() << fault.call << ": more calls than are looked at";
    return most_calls;
}

void expect_same(const support::outcome &end, const support::outcome &healthy) {
    EXPECT_EQ(end.out, healthy.out);
    EXPECT_EQ(end.err, healthy.err);
    EXPECT_EQ(end.exit_status, healthy.exit_status);
}

// A request for memory fails, alone or with all that follow.
void sweep_requests(const std::function<void()> &body,
                    const support::outcome &healthy) {
    for (int times : {1, always}) {
        int refused = 0;
        sweep({"malloc", ENOMEM, 1, times}, body,
              [&](const support::outcome &end) {
                  refused += is_out_of_memory(end);
                  if (!is_out_of_memory(end)) expect_same(end, healthy);
              });
        EXPECT_GT(refused, 0);
    }
}

// A signal interrupts a call, once or three times: nobody can tell.
void sweep_interruptions(const std::function<void()> &body,
                         const support::outcome &healthy) {
    for (const char *call : {"open", "read", "write", "pread", "close",
                             "opendir", "wait", "waitpid"}) {
        int times = strcmp(call, "close") == 0 ? 1 : 3;
        sweep({call, EINTR, 1, times}, body,
              [&](const support::outcome &end) { expect_same(end, healthy); });
    }
}

// A call fails: something is said, or the result is one without it. No signal
// ends the process, and no descriptor is forgotten.
void sweep_failures(const std::function<void()> &body) {
    for (const char *call :
         {"open",     "read",     "write",       "pread",   "close",
          "lseek",    "stat",     "fstat",       "lstat",   "access",
          "readlink", "chmod",    "opendir",     "readdir", "getcwd",
          "pipe2",    "fork",     "vfork",       "execv",   "dup",
          "fcntl",    "setenv",   "gethostname", "uname",   "getpwnam",
          "getpwuid", "getgrgid", "getlogin",    "fdopen",  "fopen",
          "fread",    "mmap"}) {
        for (int error : {EIO, EMFILE}) {
            sweep({call, error}, body, [&](const support::outcome &end) {
                EXPECT_EQ(end.signal, 0);
                EXPECT_TRUE(end.exit_status == 0 || end.exit_status == 255);
                EXPECT_TRUE(end.exit_status == 0 || end.err != "");
                EXPECT_EQ(end.out.find("(descriptors"), std::string::npos);
            });
        }
    }
}

// What is read and written comes in pieces.
void sweep_pieces(const std::function<void()> &body,
                  const support::outcome &healthy) {
    for (const char *call : {"read", "write", "pread"}) {
        for (long most : {1L, 7L, support::half}) {
            SCOPED_TRACE(call);
            expect_same(support::with_fault({call, 0, 1, always, most}, body),
                        healthy);
        }
    }
}

void check_every_call(const std::function<void()> &body) {
    const support::outcome healthy =
        support::with_fault(support::no_fault, body);
    ASSERT_EQ(healthy.exit_status, 0) << healthy.err;
    ASSERT_NE(healthy.out, "");
    sweep_requests(body, healthy);
    sweep_interruptions(body, healthy);
    sweep_failures(body);
    sweep_pieces(body, healthy);
}

TEST(sweep_fault, strings_and_arrays) {
    check_every_call([] {
        dy text{};
        dynew(&text, 0);
        for (int i = 0; i < 300; i++)
            dyfmt(&text, "@d ", i);
        dyinsert(&text, 0, "front ", 6);
        dyp words{};
        dypnew(&words, 1);
        dypsplit(&words, text.buffer, 1);
        printf("%d %s", words.count, static_cast<char *>(words.array[0]));
        free(words.array[0]);
        free(words.array);
        free(text.buffer);
        dy *pooled = dyalloc();
        dystr(pooled, "pooled");
        dyfree(pooled);
        puts(dycache("cached", -1));
        dl *head = nullptr;
        for (int i = 0; i < 40; i++)
            dlinsert(&head, dlalloc());
        while (head != nullptr) {
            dl *node = head;
            dldelete(node);
            dlfree(node);
        }
        dyd elements{};
        dydnew(&elements, 1, sizeof(int));
        for (int i = 0; i < 100; i++)
            dydadd(&elements, &i);
        printf("%d", static_cast<int *>(elements.data)[99]);
        free(elements.data);
    });
}

TEST(sweep_fault, lines_and_words) {
    std::string text;
    for (int i = 0; i < 4000; i++)
        text += "word" + std::to_string(i) + (i % 10 != 0 ? " " : "\n");
    support::write_file("file", text);
    check_every_call([] {
        int descriptor = openat(AT_FDCWD, "file", O_RDONLY);
        rdy *reader = rdy_init(descriptor);
        dy line{};
        while (rdy_getline(reader, &line, 0) != nullptr)
            printf("%d ", line.length);
        free(line.buffer);
        free(reader);
        lseek(descriptor, 0, SEEK_SET);
        dyp words{};
        dypnew(&words, 1);
        rdflist(descriptor, &words, "file");
        printf("%d", words.count);
        free(words.array);
        close(descriptor);
        blk1 block{};
        read1blk("file", &block);
        printf("%s", block.name);
        free(block.name);
    });
}

TEST(sweep_fault, small_things) {
    check_every_call([] {
        svnode head{};
        printf("%s", svstr(&head, "key", "value"));
        printf("%s", svstr(&head, "key", "another"));
        svstr(&head, "key", nullptr);
        char *copy = savenfree(savestr("copy"));
        printf("%s%d", copy, strrindex(copy, "py"));
        free(copy);
        fo *output = fo_init(1, "NAME");
        fo_put(output, 1, "text", 0);
        fo_flush(output);
        free(output);
        int value = 0;
        evalarith("((((1+2)*3)+4)*5) ? 6 : 7", &value, nullptr);
        printf("%d", value);
        char path[] = "a/./b/../c";
        printf("%s", simplify(path, 0));
        char *absolute = p_resolve("x", "/y");
        printf("%s", absolute);
        free(absolute);
    });
}

TEST(sweep_fault, patterns) {
    check_every_call([] {
        printf("%d", fmatch("abcabcabc.cc", "*a*{b,c*a}*{.c,.cc}"));
        for (const char *pattern :
             {"<<a*>*>*[bd]", "<a|aa>*b", "\\([a-z]+\\)x\\1", "a.*b$", "lib"}) {
            rxpcomp(pattern, '\0', 0);
            for (int i = 0; i < 5; i++) {
                std::string subject(60, 'a');
                printf("%d", rxpeval(subject.c_str()));
                printf("%d", rxpeval("library xbxb"));
            }
        }
        rxpcomp("\\(a+\\)b", '\0', 0);
        rxpeval("xaab");
        char *text = rxprewrite("<\\1>");
        printf("%s", text);
        free(text);
    });
}

TEST(sweep_fault, paths) {
    for (const char *file : {"d/1/x/a.c", "d/2/x/b.c", "d/a.c"})
        support::write_file(file, "");
    check_every_call([] {
        int count = 0;
        for (char *path = globber("d/*/x/*.c"); path; path = globber(nullptr))
            count++;
        for (char *path = globber("*/a.c"); path; path = globber(nullptr))
            count++;
        char *found = findfile("a.c", "x:d", 0);
        printf("%d%s", count, found);
        free(found);
    });
}

TEST(sweep_fault, dictionary_and_fixer) {
    support::write_file("dict", "A = one\nB = two\n");
    support::write_file("file", "@A@ and @B@\nlast\n");
    check_every_call([] {
        setsfwrite([](const char *line, int length) {
            fwrite(line, 1, static_cast<size_t>(length), stdout);
        });
        printf("%d", sfdict("dict"));
        printf("%d", sfixfile("file", 0));
        sf_putdict(0);
    });
}

TEST(sweep_fault, variables_and_expansion) {
    support::write_file("heap", support::heap_of({{"CC", "cc"},
                                                  {"SrcPath", ". src"},
                                                  {"T[a*]", "one"},
                                                  {"T[b]", "two"}}));
    support::write_file("src/f.c", "");
    check_every_call([] {
        lvget(0, nullptr, 1, "heap", nullptr);
        dy text{};
        dynew(&text, 0);
        printf("%s", lvexpand("@CC @T[abc] @(findfile f.c) @(expr 1+2) "
                              "@(resolve x/../y) @(match a.c *.c)",
                              &text, "test", 1));
        free(text.buffer);
        printf("%s", lvfndsrc("f.c", nullptr));
    });
}

TEST(sweep_fault, maps_and_names) {
    support::write_file("morva/data/roots.map", "/a /b\n/c /d\n");
    support::write_file("morva/data/sysnames.tab", "* n v b os 1 cpu x\n");
    support::write_file("traits", support::heap_of({{"T", "value"}}));
    setenv("TRAITS_FILE", "traits", 1);
    setenv("MORVA", "morva", 1);
    check_every_call([] {
        dy path{};
        dynew(&path, 0);
        map_root("/a/x", &path);
        printf("%s", path.buffer);
        free(path.buffer);
        printf("%s", sysnames(0, nullptr)[0]);
        printf("%s", trait_str("T", "default", 0));
        printf("%s", uniqid() != nullptr ? "id" : "");
    });
}

TEST(sweep_fault, commands) {
    check_every_call([] {
        printf("%d ", execstr(0, 1, 2, 1, 0, "echo a b"));
        printf("%d ", execstr(0, 1, 2, 1, 0, "echo c | cat"));
    });
}

TEST(sweep_fault, archives) {
    support::write_file(
        "x.a", support::ar_archive(
                   {{"a.o", "first"}, {"a-name-of-20-letters", "second"}}));
    check_every_call([] {
        int descriptor;
        const armember *list = getarlist("x.a", &descriptor);
        char *data = getarmemb(descriptor, list);
        printf("%s %.5s %s", list->name, data, list->next->name);
        free(data);
        close(descriptor);
    });
}

TEST(sweep_fault, variables_from_a_pipe) {
    support::write_file("heap",
                        support::heap_of({{"A", "one"}, {"B", "two", 2}}));
    support::install_program("kivs", "cat heap\n");
    check_every_call([] {
        lvget(0, nullptr, 1, nullptr, nullptr);
        printf("%s %s", lvvar("A"), getenv("B"));
    });
}

TEST(sweep_fault, traits_made_by_a_command) {
    support::write_file("made", support::heap_of({{"T", "value"}}));
    support::install_program("mktraits",
                             "mkdir -p morva/data/traits\n"
                             "cp made morva/data/traits/$(hostname -s).tab\n");
    setenv("MORVA", "morva", 1);
    unsetenv("TRAITS_FILE");
    support::make_folders("morva/data/traits");
    check_every_call([] {
        if (system("rm -f morva/data/traits/*") != 0) abort();
        printf("%s", trait_str("T", "default", 0));
    });
}

TEST(sweep_fault, waiting_among_children) {
    check_every_call([] {
        simulate_waitpid();
        pid_t first = fork();
        if (first == 0) _exit(1);
        // It is dead, and the first to be found, when the other one starts.
        siginfo_t ended;
        if (first > 0)
            waitid(P_PID, static_cast<id_t>(first), &ended, WEXITED | WNOWAIT);
        pid_t second = first > 0 ? fork() : -1;
        if (second == 0) _exit(2);
        int status = 0;
        if (second > 0) waitforpid(second, &status);
        if (first > 0) waitforpid(first, &status);
        printf("%d", first > 0 ? status : 256);
    });
}

TEST(sweep_fault, users_and_directories) {
    setenv("LOGNAME", "root", 1);
    check_every_call([] {
        rmdir("new");
        struct stat status;
        int made = makedir("new", 0700, 1, &status);
        const char *home = gethome("root", 0);
        const char *name = getnmuser("", "nobody");
        const char *user = getuname(0);
        printf("%d %d %d %d", made == 0, home != nullptr, name != nullptr,
               user != nullptr);
        char *absolute = p_resolve("x", nullptr);
        printf("%d", absolute[0]);
        free(absolute);
        puts(get_host());
    });
}

}  // namespace
