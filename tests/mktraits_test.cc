// mktraits_test.cc: the program that writes a host's traits.
#include "support/child.h"
#include "support/heap_image.h"
#include "support/picture.h"
#include "support/program.h"
#include "support/traces.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <tovan/execstr.h>
#include <tovan/trait.h>
#include <unistd.h>
#include <filesystem>
#include <map>
#include <sstream>

namespace {

const char tool[] = TOVAN_BINARY_DIR "/bin/mktraits";

// The file's name for this host, in its folder.
std::string host_file() {
    char name[65] = "";
    gethostname(name, sizeof name - 1);
    std::string host = name;
    return "morva/data/traits/" + host.substr(0, host.find('.')) + ".tab";
}

class mktraits_test : public testing::Test {
  protected:
    void SetUp() override {
        support::make_folders("morva/data/traits");
        setenv("MORVA", (support::current_folder() + "/morva").c_str(), 1);
        for (const char *name :
             {"_T_sh", "_T_binsh", "_T_mkdir", "DBLESLASHROOT"}) {
            unsetenv(name);
        }
        umask(022);
    }
};

support::outcome run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), tool);
    return support::run_program(arguments);
}

std::map<std::string, std::string> printed_traits() {
    support::outcome end = run({});
    EXPECT_EQ(end.exit_status, 0);
    EXPECT_EQ(end.err, "");
    std::map<std::string, std::string> traits;
    std::istringstream lines(end.out);
    for (std::string line; std::getline(lines, line);) {
        size_t sign = line.find('=');
        EXPECT_NE(sign, std::string::npos) << line;
        traits[line.substr(0, sign)] = line.substr(sign + 1);
    }
    return traits;
}

TEST_F(mktraits_test, prints_what_the_system_says) {
    auto traits = printed_traits();
    const struct {
        const char *name;
        long value;
    } rows[] = {
        {"MAXLEAFLEN", pathconf("/", _PC_NAME_MAX)},
        {"PATH_MAX", pathconf("/", _PC_PATH_MAX)},
        {"ARG_MAX", sysconf(_SC_ARG_MAX)},
        {"OPEN_MAX", sysconf(_SC_OPEN_MAX)},
        {"PAGE_SIZE", sysconf(_SC_PAGESIZE)},
        {"PROCESSORS", sysconf(_SC_NPROCESSORS_ONLN)},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(traits[row.name], std::to_string(row.value)) << row.name;
    }
    for (const char *name : {"_T_sh", "_T_binsh", "_T_mkdir"}) {
        EXPECT_EQ(traits[name][0], '/') << name;
        EXPECT_EQ(access(traits[name].c_str(), X_OK), 0) << name;
    }
    struct stat root;
    struct stat other;
    ASSERT_EQ(stat("/", &root), 0);
    ASSERT_EQ(stat("//", &other), 0);
    EXPECT_EQ(traits.count("DBLESLASHROOT"),
              root.st_ino != other.st_ino ? 1u : 0u);
    EXPECT_FALSE(support::file_exists(host_file())) << "printed only";
}

TEST_F(mktraits_test, writes_the_same_to_the_hosts_file) {
    support::outcome end = run({"-u"});
    EXPECT_EQ(end.exit_status, 0);
    EXPECT_EQ(end.out + end.err, "");
    EXPECT_STREQ(traits_file(0),
                 (support::current_folder() + "/" + host_file()).c_str());
    auto traits = printed_traits();
    EXPECT_GE(traits.size(), 10u);
    for (const auto &[name, value] : traits) {
        const char *stored = trvar(name.c_str());
        EXPECT_STREQ(stored, value.c_str()) << name;
    }
    EXPECT_EQ(maxleaf(), atoi(traits["MAXLEAFLEN"].c_str()));
}

TEST_F(mktraits_test, everybody_may_read_what_is_written) {
    for (mode_t mask : {0u, 022u, 077u}) {
        umask(mask);
        EXPECT_EQ(run({"-u"}).exit_status, 0);
        struct stat status;
        ASSERT_EQ(stat(host_file().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0644u);
    }
}

int entries_in(const std::string &folder) {
    int count = 0;
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        EXPECT_TRUE(entry.exists());
        count++;
    }
    return count;
}

TEST_F(mktraits_test, replaces_the_old_file_whole) {
    support::write_file(host_file(), "the old one");
    struct stat before;
    ASSERT_EQ(stat(host_file().c_str(), &before), 0);
    EXPECT_EQ(run({"-u"}).exit_status, 0);
    struct stat after;
    ASSERT_EQ(stat(host_file().c_str(), &after), 0);
    EXPECT_NE(after.st_ino, before.st_ino) << "another file, renamed";
    EXPECT_EQ(readtab(), 1);
    EXPECT_EQ(entries_in("morva/data/traits"), 1) << "nothing is left beside";
}

TEST_F(mktraits_test, traits_file_names_another_place) {
    setenv("TRAITS_FILE", "mine", 1);
    EXPECT_EQ(run({"-u"}).exit_status, 0);
    EXPECT_FALSE(support::file_exists(host_file()));
    EXPECT_EQ(readtab(), 1);
    EXPECT_GT(trait("MAXLEAFLEN", 0, 1), 0);
}

TEST_F(mktraits_test, a_missing_folder_is_fatal) {
    setenv("MORVA", "/nonexistent", 1);
    support::outcome end = run({"-u"});
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err,
              "mktraits: <morva-root>/data/traits directory does not exist\n");
}

TEST_F(mktraits_test, a_place_that_cannot_be_written_is_fatal) {
    setenv("TRAITS_FILE", "missing/mine", 1);
    support::outcome end = run({"-u"});
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err, "mktraits: missing/mine: No such file or directory\n");
}

TEST_F(mktraits_test, a_full_disk_leaves_the_old_file_and_nothing_else) {
    support::write_file(host_file(), "the old one");
    support::outcome end = support::run_program(
        {"sh", "-c", "trap '' XFSZ; ulimit -f 1; exec \"$0\" -u", tool});
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err, "mktraits: " + support::current_folder() + "/" +
                           host_file() + ": File too large\n");
    EXPECT_EQ(support::read_file(host_file()), "the old one");
    EXPECT_EQ(entries_in("morva/data/traits"), 1);
}

TEST_F(mktraits_test, takes_no_device_away) {
    setenv("TRAITS_FILE", "pipe", 1);
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    support::outcome end = run({"-u"});
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err, "mktraits: pipe: not a regular file\n");
}

TEST_F(mktraits_test, explains_itself) {
    for (const char *option : {"-x", "--help"}) {
        support::outcome help = run({option});
        EXPECT_EQ(help.exit_status, 0);
        EXPECT_EQ(help.out.find("mktraits [-u]\n\n"), 0u);
        EXPECT_EQ(help.err, "");
    }
    support::outcome version = run({"--version"});
    EXPECT_EQ(version.exit_status, 0);
    EXPECT_EQ(version.out, "mktraits (libtovan) 8.4.1\n");
}

// The first lines of what a package writes.
std::string trace_of(const std::string &flags, size_t lines) {
    std::string trace = run({"-u", "-V", flags}).err;
    size_t end = 0;
    while (lines-- > 0 && end < trace.size())
        end = trace.find('\n', end) + 1;
    return trace.substr(0, end);
}

TEST_F(mktraits_test, traces_what_its_packages_say) {
    setenv("TRAITS_FILE", "mine", 1);
    EXPECT_EQ(trace_of("limits", 1),
              "mktraits: limits(1) MAXLEAFLEN: " +
                  std::to_string(pathconf("/", _PC_NAME_MAX)) + "\n");
    std::string shell = printed_traits()["_T_sh"];
    EXPECT_EQ(trace_of("search", 1),
              "mktraits: search(1) _T_sh: " + shell + "\n");
    EXPECT_NE(trace_of("search=2", 100)
                  .find("mktraits: search(2) " + shell +
                        "?\nmktraits: search(1) _T_sh"),
              std::string::npos);
    EXPECT_EQ(trace_of("heap", 1).rfind("mktraits: heap(1) ", 0), 0u);
    std::string trace = trace_of("output", 2);
    EXPECT_EQ(trace.rfind("mktraits: output(1) mine.", 0), 0u);
    EXPECT_NE(trace.find("\nmktraits: output(1) it is mine now\n"),
              std::string::npos);
    EXPECT_EQ(run({"-u"}).err, "");
}

TEST_F(mktraits_test, lists_its_packages) {
    EXPECT_EQ(support::listed_packages(tool),
              (std::vector<std::string>{"heap", "limits", "output", "search"}));
}

TEST_F(mktraits_test, refuses_other_arguments) {
    const struct {
        std::vector<std::string> arguments;
        const char *message;
    } rows[] = {
        {{"-q"}, "-q: invalid flag"},
        {{"-uq"}, "-q: invalid flag"},
        {{"-V"}, "-V: value missing"},
        {{"--all"}, "--all: invalid flag"},
        {{"file"}, "file: no argument is taken"},
        {{"-u", "file"}, "file: no argument is taken"},
        {{"-"}, "-: no argument is taken"},
        {{""}, ": no argument is taken"},
    };
    for (const auto &row : rows) {
        support::outcome end = run(row.arguments);
        EXPECT_EQ(end.exit_status, 255) << row.message;
        EXPECT_EQ(end.err, std::string(row.message) +
                               "\nUsage: mktraits [-u]\n"
                               "Use -x flag for explanations\n");
        EXPECT_EQ(end.out, "");
        EXPECT_FALSE(support::file_exists(host_file()));
    }
}

TEST_F(mktraits_test, reports_output_that_cannot_be_written) {
    support::outcome end =
        support::run_program({"sh", "-c", "exec \"$0\" >/dev/full", tool});
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err, "mktraits: standard output: No space left on device\n");
}

// The whole circle: a command line needs the shell, the shell is a trait,
// the traits are not there yet.
TEST_F(mktraits_test, a_command_line_makes_the_traits_it_needs) {
    setenv("PATH",
           (TOVAN_BINARY_DIR "/bin:" + std::string(getenv("PATH"))).c_str(), 1);
    support::outcome end = support::in_child(
        [] { exit(execstr(0, 1, 2, 1, 0, "echo $((20 + 3))") == 0 ? 0 : 1); });
    EXPECT_EQ(end.exit_status, 0);
    EXPECT_EQ(end.out, "23\n");
    EXPECT_EQ(end.err, "");
    EXPECT_TRUE(support::file_exists(host_file()));
}

TEST_F(mktraits_test, the_documented_example_is_a_traits_file) {
    std::string bytes = support::pictured_bytes("docs/formats/traits.md");
    EXPECT_EQ(bytes,
              support::heap_of({{"MAXLEAFLEN", "255"}, {"_T_sh", "/bin/sh"}}));
    support::write_file("example", bytes);
    setenv("TRAITS_FILE", "example", 1);
    EXPECT_EQ(maxleaf(), 255);
    EXPECT_STREQ(trait_str("_T_sh", nullptr, 1), "/bin/sh");
}

}  // namespace
