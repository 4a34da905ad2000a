// vop_tmp_test.cc: temporary files and directories on the command line.
#include "support/child.h"
#include "support/program.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>
#include <string>
#include <vector>

namespace {

const std::string program = TOVAN_BINARY_DIR "/bin/vop";

support::outcome tmp(std::vector<std::string> words) {
    words.insert(words.begin(), {program, "tmp"});
    return support::run_program(words);
}

// The one line that a good run writes.
std::string path_from(const support::outcome &end) {
    EXPECT_EQ(end.err, "");
    EXPECT_EQ(end.exit_status, 0);
    EXPECT_EQ(end.out.find('\n'), end.out.size() - 1) << end.out;
    return end.out.substr(0, end.out.find('\n'));
}

// A path with its base replaced by "######".
std::string masked(std::string path, const std::string &start) {
    EXPECT_EQ(path.rfind(start, 0), 0u) << path;
    if (path.size() < start.size() + 6) return path;
    return path.replace(start.size(), 6, "######");
}

unsigned mode_of(const std::string &path) {
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode;
}

TEST(vop_tmp, makes_a_file_after_a_model) {
    support::make_folders("d");
    const struct {
        std::vector<std::string> words;
        const char *start;
        const char *path;
    } rows[] = {
        {{"-p", "d"}, "d/tmp", "d/tmp######"},
        {{"-pd", "x.c"}, "d/x", "d/x######.c"},
        {{"-p.", "a.b.c"}, "./a", "./a######.b.c"},
        {{"-p", ".", "--", "-m"}, "./-m", "./-m######"},
        {{"-p", "."}, "./tmp", "./tmp######"},
        {{"-p", ".", ""}, "./", "./######"},
    };
    for (const auto &row : rows) {
        std::string path = path_from(tmp(row.words));
        EXPECT_EQ(masked(path, row.start), row.path);
        EXPECT_EQ(mode_of(path), S_IFREG | 0600u) << path;
        EXPECT_EQ(support::read_file(path), "");
    }
}

TEST(vop_tmp, makes_a_directory_after_a_model) {
    std::string one = path_from(tmp({"-d", "-p", ".", "work.dir"}));
    std::string two = path_from(tmp({"-d", "-p", ".", "work.dir"}));
    EXPECT_EQ(masked(one, "./work"), "./work######.dir");
    EXPECT_EQ(masked(two, "./work"), "./work######.dir");
    EXPECT_NE(one, two);
    EXPECT_EQ(mode_of(one), S_IFDIR | 0700u);
}

TEST(vop_tmp, the_environment_names_the_directory) {
    support::make_folders("d");
    setenv("TMPDIR", "d", 1);
    EXPECT_EQ(masked(path_from(tmp({})), "d/tmp"), "d/tmp######");
    EXPECT_EQ(masked(path_from(tmp({"-d"})), "d/tmp"), "d/tmp######");
    unsetenv("TMPDIR");
    std::string path = path_from(tmp({"tovan-test-"}));
    EXPECT_EQ(masked(path, "/tmp/tovan-test-"), "/tmp/tovan-test-######");
    unlink(path.c_str());
}

TEST(vop_tmp, permissions_that_are_asked_for_are_exact) {
    const struct {
        mode_t mask;
        std::vector<std::string> words;
        unsigned mode;
    } rows[] = {
        {0, {}, 0600},
        {0200, {}, 0400},
        {0777, {"-m", "640"}, 0640},
        {0777, {"-d", "-m", "0755"}, 0755},
        {0, {"-m0"}, 0},
        {0222, {"-d"}, 0500},
    };
    for (const auto &row : rows) {
        umask(row.mask);
        std::vector<std::string> words = {"-p", "."};
        words.insert(words.end(), row.words.begin(), row.words.end());
        std::string path = path_from(tmp(words));
        EXPECT_EQ(mode_of(path) & 07777, row.mode);
    }
    umask(022);
}

TEST(vop_tmp, places_of_no_use_are_named) {
    support::write_file("plain", "");
    support::outcome end = tmp({"-p", "none", "x.c"});
    EXPECT_EQ(masked(end.err, "vop: opentmp: none/x"),
              "vop: opentmp: none/x######.c: No such file or directory\n");
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.out, "");
    end = tmp({"-d", "-p", "plain", "x.c"});
    EXPECT_EQ(masked(end.err, "vop: plain/x"),
              "vop: plain/x######.c: Not a directory\n");
    EXPECT_EQ(end.exit_status, 255);
}

TEST(vop_tmp, misuse_is_explained) {
    const std::string usage =
        "\nUsage: vop tmp [-d] [-p DIR] [-m MODE] [MODEL]\n"
        "Use -x flag for explanations\n";
    const struct {
        std::vector<std::string> words;
        const char *message;
    } rows[] = {
        {{"a", "b"}, "more than one model"},
        {{"a/b"}, "a/b: a model has no slash (-p names the directory)"},
        {{"-m", "rw"}, "-m rw: not the permissions of a file in octal"},
        {{"-m", "-1"}, "-m -1: not the permissions of a file in octal"},
        {{"-m", "1000"}, "-m 1000: not the permissions of a file in octal"},
        {{"-m", ""}, "-m : not the permissions of a file in octal"},
        {{"-m", std::string(30, '7')},
         "-m 777777777777777777777777777777: not the permissions of a file in "
         "octal"},
        {{"-m"}, "-m: value missing"},
        {{"-q"}, "-q: invalid flag"},
    };
    for (const auto &row : rows) {
        support::outcome end = tmp(row.words);
        EXPECT_EQ(end.err, row.message + usage);
        EXPECT_EQ(end.out, "");
        EXPECT_EQ(end.exit_status, 255);
    }
}

}  // namespace
