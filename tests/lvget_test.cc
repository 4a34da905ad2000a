// lvget_test.cc: where the build tree's variables come from.
#include "support/child.h"
#include "support/heap_image.h"
#include "support/program.h"
#include "support/tree.h"
#include "support/variables.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <tovan/errexit.h>
#include <tovan/lvget.h>
#include <unistd.h>
#include <set>

namespace {

std::string heap_with(const std::string &value) {
    return support::heap_of({{"FROM", value}});
}

void install_kivs(const std::string &script) {
    support::install_program("kivs", script);
}

// A kivs that writes down its arguments and hands out a prepared heap.
void install_kivs_for(const std::string &value) {
    support::write_file("kivs.heap", heap_with(value));
    install_kivs("echo \"$@\" >>arguments\ncat kivs.heap\n");
}

int open_descriptors() {
    int count = 0;
    for (int i = 0; i < 256; ++i)
        count += fcntl(i, F_GETFD) != -1;
    return count;
}

// Standard input becomes a pipe that delivers `bytes` in pieces, then ends.
void feed_input(const std::string &bytes, size_t piece) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    if (fork() == 0) {
        close(ends[0]);
        for (size_t at = 0; at < bytes.size(); at += piece) {
            size_t n = std::min(piece, bytes.size() - at);
            if (write(ends[1], bytes.data() + at, n) < 0) break;
        }
        _exit(0);
    }
    close(ends[1]);
    dup2(ends[0], 0);
    close(ends[0]);
}

TEST(lvget, reads_the_file_that_is_given) {
    support::write_file("h", heap_with("file"));
    setenv("KIVS_FILE", "elsewhere", 1);
    lvget(1, "d", 0, "h", "c");
    EXPECT_STREQ(lvvar("FROM"), "file");
}

TEST(lvget, reads_standard_input_and_leaves_it_open) {
    support::outcome end = support::in_child(
        [] {
            lvget(0, nullptr, 0, "-", nullptr);
            char rest[5] = "";
            if (read(0, rest, 4) < 0) perror("read");
            printf("%s %s", lvvar("FROM"), rest);
        },
        heap_with("input") + "rest");
    EXPECT_EQ(end.out, "input rest");
    EXPECT_EQ(end.err, "");
}

TEST(lvget, messages_name_the_source) {
    support::write_file("h", "short");
    EXPECT_FATAL(lvget(0, nullptr, 0, "h", nullptr), 255,
                 "test: h: could not read header\n");
    EXPECT_FATAL(lvget(0, nullptr, 0, "-", nullptr), 255,
                 "test: -: could not read header\n");
    setenv("KIVS_FILE", "h", 1);
    EXPECT_FATAL(lvget(0, nullptr, 0, nullptr, nullptr), 255,
                 "test: h: could not read header\n");
}

TEST(lvget, files_that_cannot_be_opened_are_fatal) {
    std::string missing = strerror(ENOENT);
    EXPECT_FATAL(lvget(0, nullptr, 0, "none", nullptr), 255,
                 "test: none: " + missing + "\n");
    setenv("KIVS_FILE", "nowhere", 1);
    EXPECT_FATAL(lvget(0, nullptr, 0, nullptr, nullptr), 255,
                 "test: nowhere: " + missing + "\n");
    setenv("KIVS_FILE", "", 1);
    EXPECT_FATAL(lvget(0, nullptr, 0, nullptr, nullptr), 255,
                 "test: : " + missing + "\n");
    EXPECT_FATAL(lvget(0, nullptr, 0, "", nullptr), 255,
                 "test: : " + missing + "\n");
}

TEST(lvget, a_directory_has_no_header) {
    support::make_folders("dir");
    EXPECT_FATAL(lvget(0, nullptr, 0, "dir", nullptr), 255,
                 "test: dir: could not read header\n");
}

TEST(lvget, kivs_file_named_minus_is_a_file) {
    support::write_file("-", heap_with("file"));
    setenv("KIVS_FILE", "-", 1);
    lvget(0, nullptr, 0, nullptr, nullptr);
    EXPECT_STREQ(lvvar("FROM"), "file");
}

TEST(lvget, kivs_file_serves_unless_something_is_asked_of_kivs) {
    const struct {
        bool file_is_set;
        int r;
        const char *d;
        const char *c;
        std::string arguments;  // of kivs; empty: it does not run
    } rows[] = {
        {true, 0, nullptr, nullptr, ""},
        {false, 0, nullptr, nullptr, "-p\n"},
        {true, 1, nullptr, nullptr, "-p -r\n"},
        {true, 0, "dir", nullptr, "-p -ddir\n"},
        {true, 0, nullptr, "conf", "-p -cconf\n"},
        {true, 0, "", nullptr, "-p -d\n"},
        {true, 0, nullptr, "", "-p -c\n"},
        {true, -1, "dir", "conf", "-p -r -cconf -ddir\n"},
    };
    install_kivs_for("pipe");
    support::write_file("prepared", heap_with("prepared"));
    for (const auto &row : rows) {
        unsetenv("KIVS_FILE");
        if (row.file_is_set) setenv("KIVS_FILE", "prepared", 1);
        unlink("arguments");
        lvget(row.r, row.d, 1, nullptr, row.c);
        bool ran = support::file_exists("arguments");
        EXPECT_EQ(ran ? support::read_file("arguments") : "", row.arguments);
        EXPECT_STREQ(lvvar("FROM"), ran ? "pipe" : "prepared");
    }
}

TEST(lvget, names_the_command_with_a_less) {
    install_kivs("exit 0\n");
    setenv("KIVS_FILE", "ignored", 1);
    EXPECT_FATAL(lvget(1, nullptr, 0, nullptr, nullptr), 255,
                 "test: <kivs -p -r: could not read header\n");
    EXPECT_FATAL(lvget(0, "d", 0, nullptr, "c"), 255,
                 "test: <kivs -p -cc -dd: could not read header\n");
}

TEST(lvget, a_kivs_that_fails_after_a_whole_heap_is_fatal) {
    install_kivs_for("pipe");
    install_kivs("cat kivs.heap; exit 3\n");
    EXPECT_FATAL(lvget(0, nullptr, 0, nullptr, nullptr), 255,
                 "test: kivs -p aborted\n");
    install_kivs("cat kivs.heap; kill -9 $$\n");
    EXPECT_FATAL(lvget(0, nullptr, 0, nullptr, nullptr), 255,
                 "test: kivs -p aborted\n");
}

// What kivs wrote is judged after how it ended.
TEST(lvget, a_damaged_heap_of_a_failed_kivs_counts_as_aborted) {
    support::heap_image image;
    image.heads[0] = 99;
    support::write_file("kivs.heap", image.bytes());
    install_kivs("cat kivs.heap; exit 1\n");
    EXPECT_FATAL(lvget(0, nullptr, 0, nullptr, nullptr), 255,
                 "test: kivs -p aborted\n");
    install_kivs("cat kivs.heap\n");
    EXPECT_FATAL(lvget(0, nullptr, 0, nullptr, nullptr), 255,
                 "test: <kivs -p: kivs heap is damaged\n");
}

TEST(lvget, a_child_reaped_by_somebody_else_counts_as_aborted) {
    install_kivs_for("pipe");
    EXPECT_FATAL(signal(SIGCHLD, SIG_IGN);
                 lvget(0, nullptr, 0, nullptr, nullptr), 255,
                 "test: kivs -p aborted\n");
}

TEST(lvget, a_missing_kivs_is_reported_by_its_child_and_its_parent) {
    setenv("PATH", "/nowhere", 1);
    support::outcome end =
        support::in_child([] { lvget(0, nullptr, 0, nullptr, nullptr); });
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err,
              "test: kivs: not found\n"
              "test: <kivs -p: could not read header\n");
}

TEST(lvget, a_loaded_heap_stays_without_reload) {
    support::load_variables({{"FROM", "first"}});
    support::write_file("h", heap_with("second"));
    lvget(0, nullptr, 0, "h", nullptr);
    EXPECT_STREQ(lvvar("FROM"), "first");
    lvget(0, nullptr, 0, "does not exist", nullptr);
    lvget(0, nullptr, 1, "h", nullptr);
    EXPECT_STREQ(lvvar("FROM"), "second");
}

TEST(lvget, a_failed_reload_leaves_nothing_loaded) {
    support::outcome end = support::in_child([] {
        support::load_variables({{"FROM", "first"}});
        set_exit_rtn([](int) {
            set_exit_rtn(nullptr);
            lvvar("FROM");
        });
        lvget(0, nullptr, 1, "none", nullptr);
    });
    EXPECT_EQ(end.err,
              "test: none: No such file or directory\n"
              "test: LOGIC ERROR: lvvar() called before lvget()\n");
}

TEST(lvget, sets_the_look_up_pointer_first_of_all) {
    EXPECT_EQ(lvvarrtn, nullptr);
    support::load_variables({{"A", "1"}});
    EXPECT_EQ(lvvarrtn, lvvar);
    lvvarrtn = nullptr;
    lvget(0, nullptr, 0, nullptr, nullptr);
    EXPECT_EQ(lvvarrtn, lvvar);
    EXPECT_STREQ(lvvarrtn("A"), "1");
}

std::set<std::string> environment() {
    std::set<std::string> all;
    for (char **entry = environ; *entry != nullptr; ++entry)
        all.insert(*entry);
    return all;
}

TEST(lvget, nothing_but_flagged_variables_reaches_the_environment) {
    std::vector<support::variable> variables;
    std::set<std::string> expected = environment();
    for (int flags = 0; flags < 256; ++flags) {
        std::string name = "V" + std::to_string(flags);
        variables.push_back({name, "value", flags});
        if ((flags & 2) != 0) expected.insert(name + "=value");
    }
    for (const char *name : {"PATH", "IFS", "LD_PRELOAD", "BASH_ENV"})
        variables.push_back({name, "unflagged", 0xfd});
    support::load_variables(variables);
    EXPECT_EQ(environment(), expected);
}

TEST(lvget, exports_replace_what_was_set) {
    setenv("CC", "old", 1);
    support::load_variables({{"CC", "new", 2}, {"EMPTY", "", 2}});
    EXPECT_STREQ(getenv("CC"), "new");
    EXPECT_STREQ(getenv("EMPTY"), "");
}

std::vector<std::string> ordered_environment() {
    std::vector<std::string> all;
    for (char **entry = environ; *entry != nullptr; ++entry)
        all.emplace_back(*entry);
    return all;
}

std::vector<support::variable> exported_variables(int count) {
    std::vector<support::variable> variables;
    for (int i = 0; i < count; ++i) {
        std::string name = "V" + std::to_string(i * 7919L % count);
        variables.push_back({name, "x" + std::to_string(i), 2});
    }
    return variables;
}

// An environment with a name twice, one without a value and one of no sort.
char odd_strings[][16] = {"V3=first",  "HOME=/",   "V3=second",
                          "no_equals", "=no_name", "V70="};
char *odd_environment[] = {odd_strings[0], odd_strings[1], odd_strings[2],
                           odd_strings[3], odd_strings[4], odd_strings[5],
                           nullptr};

// Few go one by one, many at once: the environment is the same.
TEST(lvget, any_number_of_exports_gives_what_setenv_gives) {
    for (int count : {1, 64, 65, 66, 3000}) {
        std::vector<support::variable> variables = exported_variables(count);
        variables.push_back({"V5", "is not looked at", 2});
        environ = odd_environment;
        support::load_variables(variables);
        std::vector<std::string> loaded = ordered_environment();
        environ = odd_environment;
        lvwalk(2, [](int, int, const char *name, const char *value) {
            return setenv(name, value, 1);
        });
        EXPECT_EQ(loaded, ordered_environment()) << count;
    }
}

TEST(lvget, exports_without_any_environment) {
    environ = nullptr;
    support::load_variables(exported_variables(100));
    EXPECT_EQ(ordered_environment().size(), 100u);
    EXPECT_STREQ(getenv("V0"), "x0");
}

TEST(lvget, the_environment_can_be_changed_after_many_exports) {
    support::load_variables(exported_variables(100));
    size_t before = ordered_environment().size();
    setenv("V5", "changed", 1);
    setenv("V_MORE", "y", 1);
    unsetenv("V6");
    EXPECT_EQ(ordered_environment().size(), before);
    EXPECT_STREQ(getenv("V5"), "changed");
    EXPECT_STREQ(getenv("V_MORE"), "y");
    EXPECT_EQ(getenv("V6"), nullptr);
    support::load_variables(exported_variables(100));
    EXPECT_STRNE(getenv("V5"), "changed");
    EXPECT_NE(getenv("V6"), nullptr);
}

TEST(lvget, a_name_that_cannot_be_exported_ends_the_load) {
    for (int count : {0, 100}) {
        for (const char *name : {"", "A=B", "="}) {
            support::heap_image image;
            for (int i = 0; i < count; ++i)
                image.add_to(0, "V" + std::to_string(i), "x", 2);
            image.add_to(1, name, "y", 2);
            image.add_to(2, "BEHIND", "z", 2);
            support::outcome end = support::in_child([&image] {
                set_exit_rtn([](int) {
                    fputs(getenv("V0") != nullptr ? "V0\n" : "", stderr);
                    fputs(getenv("BEHIND") != nullptr ? "BEHIND\n" : "",
                          stderr);
                });
                support::load_heap(image.bytes());
            });
            EXPECT_EQ(end.err, std::string("test: export of kivs ") + name +
                                   " failed\n" + (count > 0 ? "V0\n" : ""));
        }
    }
}

// One by one they would take 10^10 comparisons.
TEST(lvget, a_hundred_thousand_variables_are_exported) {
    support::load_variables(exported_variables(100000));
    EXPECT_STREQ(environ[ordered_environment().size()], nullptr);
    std::set<std::string> all = environment();
    for (int i = 0; i < 100000; i += 997) {
        std::string name = "V" + std::to_string(i * 7919L % 100000);
        EXPECT_EQ(all.count(name + "=x" + std::to_string(i)), 1u) << name;
    }
}

TEST(lvget, nothing_is_exported_from_a_damaged_heap) {
    support::heap_image image;
    image.add_to(0, "EXPORTED", "1", 2);
    image.heads[255] = 99;
    support::outcome end = support::in_child([&image] {
        set_exit_rtn([](int) {
            fputs(getenv("EXPORTED") != nullptr ? "set\n" : "unset\n", stderr);
        });
        support::load_heap(image.bytes());
    });
    EXPECT_EQ(end.err, "test: variables.heap: kivs heap is damaged\nunset\n");
}

TEST(lvget, leaves_no_descriptor_and_no_child_behind) {
    install_kivs_for("pipe");
    int before = open_descriptors();
    lvget(0, nullptr, 0, nullptr, nullptr);
    support::load_variables({{"A", "1"}});
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(waitpid(-1, nullptr, 0), -1);
}

TEST(lvget, every_standard_descriptor_may_be_closed) {
    install_kivs_for("pipe");
    for (int closed = 0; closed < 8; ++closed) {
        support::outcome end = support::in_child([closed] {
            for (int i = 0; i < 3; ++i) {
                if ((closed >> i & 1) != 0) close(i);
            }
            lvget(0, nullptr, 0, nullptr, nullptr);
            _exit(strcmp(lvvar("FROM"), "pipe") == 0 ? 7 : 8);
        });
        EXPECT_EQ(end.exit_status, 7) << closed << end.err;
    }
}

TEST(lvget, a_file_opened_as_descriptor_0_is_closed) {
    support::outcome end = support::in_child([] {
        support::write_file("h", heap_with("file"));
        close(0);
        lvget(0, nullptr, 0, "h", nullptr);
        _exit(fcntl(0, F_GETFD) == -1 ? 7 : 8);
    });
    EXPECT_EQ(end.exit_status, 7);
}

TEST(lvget, a_pipe_may_deliver_byte_by_byte) {
    support::outcome end = support::in_child([] {
        feed_input(heap_with("input"), 1);
        lvget(0, nullptr, 0, "-", nullptr);
        fputs(lvvar("FROM"), stdout);
    });
    EXPECT_EQ(end.out, "input");
    EXPECT_EQ(end.err, "");
}

TEST(lvget, large_heaps_come_through_a_pipe) {
    std::string value(3 << 20, 'v');
    support::outcome end = support::in_child([&value] {
        feed_input(heap_with(value), 7777);
        lvget(0, nullptr, 0, "-", nullptr);
        fputs(lvvar("FROM") == value ? "same" : "other", stdout);
    });
    EXPECT_EQ(end.out, "same");
}

TEST(lvget, a_writer_may_die_after_any_byte) {
    std::string whole = heap_with("input");
    for (size_t k = 0; k < whole.size(); k += k < 1040 ? 47 : 1) {
        support::outcome end = support::in_child([&whole, k] {
            feed_input(whole.substr(0, k), 4096);
            lvget(0, nullptr, 0, "-", nullptr);
        });
        EXPECT_EQ(end.err, k < support::heap_image::header_size
                               ? "test: -: could not read header\n"
                               : "test: -: could not read kivs heap\n")
            << k;
    }
}

TEST(readblk, reads_up_to_the_count_or_the_end) {
    support::write_file("f", "abcdef");
    const struct {
        int count;
        int result;
        std::string bytes;
    } rows[] = {
        {3, 3, "abc"}, {6, 6, "abcdef"}, {9, 6, "abcdef"},
        {1, 1, "a"},   {0, 0, ""},       {-1, 0, ""},
    };
    for (const auto &row : rows) {
        int descriptor = open("f", O_RDONLY);
        std::string buffer(16, '\0');
        EXPECT_EQ(readblk(descriptor, buffer.data(), row.count), row.result);
        EXPECT_STREQ(buffer.c_str(), row.bytes.c_str());
        EXPECT_EQ(lseek(descriptor, 0, SEEK_CUR), row.result);
        close(descriptor);
    }
}

TEST(readblk, gathers_pieces_and_reports_errors) {
    support::outcome end = support::in_child([] {
        feed_input("0123456789", 1);
        char buffer[16] = "";
        printf("%d", readblk(0, buffer, 16));
        printf(" %s %d", buffer, readblk(0, buffer, 16));
    });
    EXPECT_EQ(end.out, "10 0123456789 0");
    char buffer[4];
    EXPECT_EQ(readblk(-1, buffer, 4), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(readblk(-1, buffer, 0), 0);
}

}  // namespace
