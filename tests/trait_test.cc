// trait_test.cc: per-host settings.
#include "support/child.h"
#include "support/heap_image.h"
#include "support/program.h"
#include "support/tree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/errexit.h>
#include <tovan/trait.h>
#include <unistd.h>

// The host's name, as the library asks for it.
namespace {
std::string host = "builder.example.org";
}
extern "C" int gethostname(char *name, size_t size) noexcept {
    snprintf(name, size, "%s", host.c_str());
    return 0;
}

namespace {

const std::string folder = "morva/data/traits";

class trait_test : public testing::Test {
  protected:
    void SetUp() override {
        support::make_folders(folder);
        setenv("MORVA", (support::current_folder() + "/morva").c_str(), 1);
        setenv("PATH", "bin:/usr/bin:/bin", 1);
    }
};

void write_traits(const std::vector<support::variable> &traits,
                  const std::string &file = folder + "/builder.tab") {
    support::write_file(file, support::heap_of(traits));
}

std::string full(const std::string &path) {
    return support::current_folder() + "/" + path;
}

TEST_F(trait_test, the_file_is_named_by_the_short_host_name) {
    EXPECT_EQ(traits_file(0), full(folder + "/builder.tab"));
}

TEST_F(trait_test, a_host_name_without_a_dot_is_used_whole) {
    host = "workshop";
    EXPECT_EQ(traits_file(0), full(folder + "/workshop.tab"));
}

TEST_F(trait_test, the_file_is_named_once) {
    const char *name = traits_file(0);
    host = "other";
    setenv("TRAITS_FILE", "elsewhere", 1);
    EXPECT_EQ(traits_file(1), name);
    EXPECT_STREQ(name, full(folder + "/builder.tab").c_str());
}

TEST_F(trait_test, traits_file_in_the_environment_names_it) {
    setenv("TRAITS_FILE", "mine", 1);
    const char *name = traits_file(0);
    setenv("TRAITS_FILE", "yours", 1);
    EXPECT_STREQ(name, "mine");
}

TEST_F(trait_test, a_missing_folder_is_fatal) {
    setenv("MORVA", "/nonexistent", 1);
    EXPECT_FATAL(traits_file(0), 255,
                 "test: <morva-root>/data/traits directory does not exist\n");
}

TEST_F(trait_test, values_come_from_the_file) {
    write_traits({{"MAXLEAFLEN", "255"}, {"EMPTY", ""}, {"TEXT", "a b"}});
    EXPECT_EQ(readtab(), 1);
    EXPECT_STREQ(trvar("MAXLEAFLEN"), "255");
    EXPECT_STREQ(trvar("EMPTY"), "");
    EXPECT_STREQ(trvar("TEXT"), "a b");
    EXPECT_EQ(trvar("MAXLEAF"), nullptr);
    EXPECT_EQ(trvar(""), nullptr);
}

TEST_F(trait_test, of_equal_names_the_first_in_its_chain_counts) {
    write_traits({{"A", "first"}, {"B", "x"}, {"A", "second"}});
    EXPECT_STREQ(trvar("A"), "first");
}

TEST_F(trait_test, the_environment_comes_before_the_file) {
    write_traits({{"TR_A", "file"}, {"TR_B", "file"}, {"TR_N", "3"}});
    setenv("TR_B", "environment", 1);
    setenv("TR_N", "4", 1);
    EXPECT_STREQ(trait_str("TR_A", "default", 0), "file");
    EXPECT_STREQ(trait_str("TR_B", "default", 0), "environment");
    EXPECT_STREQ(trvar("TR_B"), "file");
    EXPECT_EQ(trait("TR_N", 5, 0), 4);
    setenv("TR_B", "", 1);
    EXPECT_STREQ(trait_str("TR_B", "default", 1), "") << "set, but empty";
}

TEST_F(trait_test, the_default_comes_last) {
    write_traits({{"TR_A", "file"}});
    const char fallback[] = "default";
    EXPECT_EQ(trait_str("TR_X", fallback, 0), fallback);
    EXPECT_EQ(trait_str("TR_X", nullptr, 0), nullptr);
    EXPECT_EQ(trait("TR_X", -77, 0), -77);
}

TEST_F(trait_test, a_trait_that_must_be_there_is_fatal) {
    write_traits({{"TR_A", "5"}});
    EXPECT_STREQ(trait_str("TR_A", nullptr, 1), "5");
    EXPECT_EQ(trait("TR_A", 0, 1), 5);
    EXPECT_FATAL(trait_str("TR_X", "default", 1), 255,
                 "test: TR_X: trait not in table\n");
    EXPECT_FATAL(trait("TR_X", 3, 1), 255, "test: TR_X: trait not in table\n");
}

TEST_F(trait_test, numbers_are_read_in_base_10) {
    const struct {
        const char *text;
        int number;
    } rows[] = {
        {"255", 255},
        {" -12x", -12},
        {"0x10", 0},
        {"010", 10},
        {"", 0},
        {"x", 0},
        {"+7", 7},
        {"2147483647", INT_MAX},
        {"-2147483648", INT_MIN},
        {"2147483648", INT_MAX},
        {"-2147483649", INT_MIN},
        {"99999999999999999999", INT_MAX},
    };
    for (const auto &row : rows) {
        setenv("TR_N", row.text, 1);
        EXPECT_EQ(trait("TR_N", 1, 0), row.number) << row.text;
    }
}

TEST_F(trait_test, maxleaf_from_the_environment_reads_no_file) {
    setenv("TRAITS_FILE", "/nonexistent", 1);
    setenv("MAXLEAFLEN", "255", 1);
    EXPECT_EQ(maxleaf(), 255);
    setenv("MAXLEAFLEN", "100", 1);
    EXPECT_EQ(maxleaf(), 255) << "read once";
}

TEST_F(trait_test, maxleaf_from_the_file) {
    write_traits({{"MAXLEAFLEN", "77"}});
    EXPECT_EQ(maxleaf(), 77);
}

TEST_F(trait_test, maxleaf_without_the_trait_is_14) {
    write_traits({{"TR_A", "77"}});
    EXPECT_EQ(maxleaf(), 14);
}

std::string walked;

int write_down(int bucket, int flags, const char *name, const char *value) {
    EXPECT_EQ(bucket, support::bucket_of(name));
    walked +=
        std::string(name) + "=" + value + ":" + std::to_string(flags) + " ";
    return static_cast<int>(walked.size());
}

// What a walk writes down, and that its result is the last call's.
std::string walk(int mask) {
    walked.clear();
    int result = traitwalk(mask, write_down);
    EXPECT_EQ(result, static_cast<int>(walked.size()));
    return walked;
}

TEST_F(trait_test, a_walk_goes_by_buckets_and_chains) {
    std::vector<support::variable> traits{
        {"TR_A", "1", 0}, {"TR_B", "2", 1}, {"TR_C", "3", 0x82}};
    write_traits(traits);
    std::string expected;
    for (int bucket = 0; bucket < 256; bucket++) {
        for (const auto &one : traits) {
            if (support::bucket_of(one.name) != bucket) continue;
            expected += one.name + "=" + one.value + ":" +
                        std::to_string(static_cast<signed char>(one.flags)) +
                        " ";
        }
    }
    EXPECT_EQ(walk(0), expected);
    EXPECT_EQ(walk(1), "TR_B=2:1 ");
    EXPECT_EQ(walk(2), "TR_C=3:-126 ");
    EXPECT_EQ(walk(4), "");
    EXPECT_EQ(walk(0x100), "TR_C=3:-126 ") << "the flags are sign-extended";
    setenv("TR_B", "mine", 1);
    EXPECT_EQ(walk(1), "TR_B=mine:1 ");
}

TEST_F(trait_test, nothing_is_exported_by_loading) {
    write_traits({{"TR_A", "1", 2}});
    EXPECT_EQ(readtab(), 1);
    EXPECT_EQ(getenv("TR_A"), nullptr);
}

TEST_F(trait_test, a_walk_without_traits_gives_0) {
    write_traits({});
    EXPECT_EQ(walk(0), "");
}

TEST_F(trait_test, a_missing_file_is_made_by_mktraits) {
    support::write_file("prepared", support::heap_of({{"TR_A", "made"}}));
    support::write_script("bin/mktraits",
                          "echo \"mktraits $*\"; read line; echo $line >&2\n"
                          "cp prepared $MORVA/data/traits/builder.tab");
    support::outcome end = support::in_child(
        [] {
            printf("%s\n", trait_str("TR_A", "default", 0));
            printf("%d\n", readtab());
        },
        "our input\n");
    EXPECT_EQ(end.out, "mktraits -u\nmade\n1\n");
    EXPECT_EQ(end.err, "our input\n");
}

TEST_F(trait_test, a_failing_mktraits_is_one_warning) {
    for (const char *script : {"exit 3", "kill -9 $$", ""}) {
        support::write_script("bin/mktraits", script);
        support::outcome end = support::in_child([] {
            printf("%d", trait("TR_A", 5, 0));
            printf("%d", trait("TR_A", 6, 0));
            printf("%d", readtab());
            printf("%d", traitwalk(0, write_down));
            EXPECT_EQ(trvar("TR_A"), nullptr);
        });
        if (*script == '\0') {
            EXPECT_EQ(end.exit_status, 255) << "it made nothing";
            EXPECT_EQ(end.err, "test: " + full(folder + "/builder.tab") +
                                   ": No such file or directory\n");
            continue;
        }
        EXPECT_EQ(end.out, "5600");
        EXPECT_EQ(end.err, "test: Warning: mktraits -u failed\n");
    }
}

TEST_F(trait_test, a_missing_mktraits_is_told_and_warned_about) {
    support::outcome end =
        support::in_child([] { printf("%d", trait("TR_A", 5, 0)); });
    EXPECT_EQ(end.out, "5");
    EXPECT_EQ(end.err,
              "test: mktraits: not found\n"
              "test: Warning: mktraits -u failed\n");
}

TEST_F(trait_test, warnings_leave_out_a_null_progname) {
    support::write_script("bin/mktraits", "exit 3");
    EXPECT_FATAL(
        {
            progname = nullptr;
            readtab();
        },
        0, "Warning: mktraits -u failed\n");
}

// mktraits has no interpreter line: running it asks for the shell, the shell
// is a trait, and the traits are made by running mktraits.
TEST_F(trait_test, making_traits_by_a_bare_script_ends) {
    unsetenv("_T_binsh");
    support::write_file("prepared", support::heap_of({{"TR_A", "made"}}));
    support::write_program("bin/mktraits",
                           "cp prepared $MORVA/data/traits/builder.tab\n");
    support::outcome end = support::in_child(
        [] { printf("%s", trait_str("TR_A", "default", 0)); });
    EXPECT_EQ(end.out, "made");
    EXPECT_EQ(end.err,
              "test: Logic error -- see errRecursiveExec(x-vopmisc)\n"
              "test: Warning: mktraits -u failed\n")
        << "from the child that asks for the shell";
}

TEST_F(trait_test, a_named_file_that_is_missing_is_fatal) {
    setenv("TRAITS_FILE", "/nonexistent", 1);
    setenv("TR_A", "x", 1);
    EXPECT_FATAL(trait_str("TR_A", nullptr, 0), 0, "");
    EXPECT_FATAL(trait_str("TR_B", nullptr, 0), 255,
                 "test: /nonexistent ($TRAITS_FILE): cannot open, No such "
                 "file or directory\n");
}

TEST_F(trait_test, an_unreadable_file_is_one_warning) {
    // A component that is no folder: unreadable even for root.
    support::write_file("plain", "x");
    host = "builder";
    ASSERT_EQ(rmdir(folder.c_str()), 0);
    ASSERT_EQ(symlink(full("plain").c_str(), folder.c_str()), 0);
    support::outcome end = support::in_child([] {
        printf("%d", trait("TR_A", 5, 0));
        printf("%d", trait("TR_A", 6, 0));
    });
    EXPECT_EQ(end.out, "56");
    EXPECT_EQ(end.err, "test: Warning: " + full(folder + "/builder.tab") +
                           " not readable (Not a directory)\n");
    setenv("TRAITS_FILE", (folder + "/x").c_str(), 1);
    EXPECT_FATAL(readtab(), 255,
                 "test: " + folder +
                     "/x ($TRAITS_FILE): cannot open, Not a "
                     "directory\n");
}

TEST_F(trait_test, a_damaged_file_is_fatal) {
    support::heap_image cycle;
    cycle.set_next(cycle.add("A", "1"), cycle.add("B", "2"));
    cycle.heads[support::bucket_of("A")] = 1;
    cycle.set_next(1, 1);
    std::string sound = support::heap_of({{"A", "1"}});
    std::string wrong_magic = sound;
    wrong_magic[9] = 'x';
    const struct {
        std::string bytes;
        const char *message;
    } rows[] = {
        {"", "could not read header"},
        {sound.substr(0, 1051), "could not read header"},
        {wrong_magic, "header magic not valid"},
        {sound.substr(0, sound.size() - 1), "could not read kivs heap"},
        {cycle.bytes(), "kivs heap is damaged"},
    };
    setenv("TRAITS_FILE", "damaged", 1);
    for (const auto &row : rows) {
        support::write_file("damaged", row.bytes);
        EXPECT_FATAL(readtab(), 255,
                     "test: damaged: " + std::string(row.message) + "\n");
    }
}

TEST_F(trait_test, no_descriptor_stays_open) {
    write_traits({{"A", "1"}});
    int before = open("/dev/null", O_RDONLY);
    close(before);
    EXPECT_EQ(readtab(), 1);
    int after = open("/dev/null", O_RDONLY);
    EXPECT_EQ(after, before);
    close(after);
}

}  // namespace
