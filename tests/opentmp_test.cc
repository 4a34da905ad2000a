// opentmp_test.cc: temporary files after a model, with a process id and
// system calls of the test's own.
#include "support/child.h"
#include "support/creation.h"
#include "support/program.h"
#include "support/tree.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tovan/opentmp.h>
#include <unistd.h>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

pid_t process = 4464;

// What rand() answers when it is not empty; the last answer stays.
std::vector<int> numbers;
unsigned seed = 0;
int seedings = 0;
unsigned random_state = 0;

}  // namespace

extern "C" pid_t getpid() noexcept {
    return process;
}

extern "C" void srand(unsigned value) noexcept {
    seed = value;
    random_state = value;
    ++seedings;
}

extern "C" int rand() noexcept {
    if (numbers.empty()) {
        random_state = random_state * 1103515245 + 12345;
        return static_cast<int>(random_state >> 1);
    }
    int number = numbers.front();
    if (numbers.size() > 1) numbers.erase(numbers.begin());
    return number;
}

namespace {

// The path of a new file.
std::string path_for(const char *directory, const char *model,
                     int mode = 0600) {
    char *path = opentmp(directory, model, mode, nullptr);
    std::string text = path;
    free(path);
    return text;
}

// What rand() must answer for a base.
int number_of(const std::string &base) {
    const std::string digits = "abcdefghijklmnopqrstuvwxyz0123456789";
    uint64_t number = 0;
    for (size_t i = base.size(); i > 0; --i)
        number = number * 36 + digits.find(base[i - 1]);
    return static_cast<int>(number);
}

void use_up_letters() {
    for (char letter = 'a'; letter <= 'z'; ++letter)
        path_for(".", "letters");
}

unsigned mode_of(const std::string &path) {
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode;
}

// What was there before: a victim behind links, directories, FIFOs.
void occupy(const std::string &path, int kind) {
    int result = kind % 4 == 0   ? symlink("victim", path.c_str())
                 : kind % 4 == 1 ? symlink("nothing", path.c_str())
                 : kind % 4 == 2 ? mkdir(path.c_str(), 0700)
                                 : mkfifo(path.c_str(), 0600);
    ASSERT_EQ(result, 0) << path;
}

TEST(opentmp, the_base_stands_before_the_first_dot) {
    ASSERT_EQ(mkdir("d", 0755), 0);
    const struct {
        const char *directory;
        const char *model;
        const char *path;
    } rows[] = {
        {"d", "x.c", "d/x04464a.c"},
        {"d", "x", "d/x04464b"},
        {"d", "", "d/04464c"},
        {"d", ".", "d/04464d."},
        {"d", ".profile", "d/04464e.profile"},
        {"d", "a.b.c", "d/a04464f.b.c"},
        {"d/", "x.", "d//x04464g."},
        {".", "100%s", "./100%s04464h"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(path_for(row.directory, row.model), row.path);
        EXPECT_EQ(mode_of(row.path), S_IFREG | 0600u);
    }
}

TEST(opentmp, hands_the_descriptor_out) {
    int descriptor = -1;
    char *path = opentmp(".", "x", 0640, &descriptor);
    struct stat here = {};
    struct stat there = {};
    ASSERT_EQ(fstat(descriptor, &here), 0);
    ASSERT_EQ(lstat(path, &there), 0);
    EXPECT_EQ(here.st_ino, there.st_ino);
    EXPECT_EQ(write(descriptor, "text", 4), 4);
    char text[5] = "";
    EXPECT_EQ(pread(descriptor, text, 4, 0), 4);
    EXPECT_STREQ(text, "text");
    EXPECT_EQ(fcntl(descriptor, F_GETFD), 0) << "commands inherit it";
    close(descriptor);
    free(path);
}

TEST(opentmp, without_a_place_for_it_the_descriptor_is_closed) {
    int before = dup(0);
    close(before);
    for (int i = 0; i < 10; ++i)
        path_for(".", "x");
    int after = dup(0);
    close(after);
    EXPECT_EQ(after, before);
}

TEST(opentmp, the_umask_takes_from_the_mode) {
    for (int mode : {0600, 0666, 0755, 0}) {
        for (mode_t mask : {0u, 022u, 0777u}) {
            umask(mask);
            std::string path = path_for(".", "m", mode);
            unsigned expected = static_cast<unsigned>(mode) & ~mask;
            EXPECT_EQ(mode_of(path), S_IFREG | expected);
        }
    }
    umask(022);
}

TEST(opentmp, a_closed_mode_still_gives_an_open_file) {
    umask(0777);
    int descriptor = -1;
    free(opentmp(".", "x", 0600, &descriptor));
    umask(022);
    EXPECT_EQ(write(descriptor, "x", 1), 1);
    close(descriptor);
}

TEST(opentmp, the_first_26_bases_are_the_process_and_a_letter) {
    process = 7;
    for (char letter = 'a'; letter <= 'z'; ++letter)
        EXPECT_EQ(path_for(".", "x"), std::string("./x00007") + letter);
    EXPECT_EQ(seedings, 0);
    numbers = {number_of("q09zab"), number_of("aaaaaa"), 0x7fffffff};
    EXPECT_EQ(path_for(".", "x"), "./xq09zab");
    EXPECT_EQ(path_for(".", "x"), "./xaaaaaa");
    EXPECT_EQ(path_for(".", "x"), "./xt9aus9") << "all of 31 bits";
    EXPECT_EQ(seed, 7u);
    EXPECT_EQ(seedings, 1);
}

TEST(opentmp, long_process_ids_have_no_letters) {
    const struct {
        pid_t process;
        const char *first;
    } rows[] = {{99999, "./x99999a"}, {100000, "./xqqqqqq"}};
    for (const auto &row : rows) {
        support::outcome end = support::in_child([&] {
            process = row.process;
            numbers = {number_of("qqqqqq")};
            puts(path_for(".", "x").c_str());
            printf("%d %u\n", seedings, seed);
        });
        std::string seeded = row.process == 100000 ? "1 100000\n" : "0 0\n";
        EXPECT_EQ(end.out, std::string(row.first) + "\n" + seeded);
    }
}

TEST(opentmp, the_process_is_asked_once) {
    EXPECT_EQ(path_for(".", "x"), "./x04464a");
    process = 5;
    EXPECT_EQ(path_for(".", "x"), "./x04464b");
}

TEST(opentmp, a_generator_that_gives_the_process_has_cycled) {
    use_up_letters();
    numbers = {process};
    EXPECT_FATAL(path_for(".", "x"), 255,
                 "test: opentmp: random number generator has cycled\n");
}

TEST(opentmp, names_that_are_taken_are_passed_over) {
    support::write_file("victim", "untouched");
    ASSERT_EQ(chmod("victim", 0640), 0);
    int kind = 0;
    for (char letter = 'a'; letter <= 'z'; ++letter)
        occupy(std::string("x04464") + letter + ".c", kind++);
    unsigned first = 70000000;
    for (unsigned i = 0; i < 1000; ++i) {
        unsigned number = first + i * 1000003;
        numbers.push_back(static_cast<int>(number));
        std::string base;
        for (int j = 0; j < 6; ++j, number /= 36)
            base += "abcdefghijklmnopqrstuvwxyz0123456789"[number % 36];
        occupy("x" + base + ".c", kind++);
    }
    numbers.push_back(number_of("z9z9za"));
    EXPECT_EQ(path_for(".", "x.c"), "./xz9z9za.c");
    EXPECT_EQ(support::creations, 1027u);
    EXPECT_EQ(support::read_file("victim"), "untouched");
    EXPECT_EQ(mode_of("victim"), S_IFREG | 0640u);
    EXPECT_FALSE(support::file_exists("nothing"));
}

TEST(opentmp, ten_thousand_files_in_one_process) {
    std::set<std::string> paths;
    for (int i = 0; i < 10000; ++i)
        paths.insert(path_for(".", "n.o"));
    EXPECT_EQ(paths.size(), 10000u);
    for (const std::string &path : paths)
        EXPECT_EQ(mode_of(path), S_IFREG | 0600u);
}

// Parent and child go through the same names; each file has one owner.
TEST(opentmp, two_processes_never_share_a_file) {
    constexpr int files = 1000;
    auto make_files = [](const std::string &mark) {
        std::string all;
        for (int i = 0; i < files; ++i) {
            int descriptor = -1;
            char *path = opentmp(".", "race", 0600, &descriptor);
            if (write(descriptor, mark.data(), 1) != 1) _exit(1);
            close(descriptor);
            all += std::string(path) + "\n";
            free(path);
        }
        support::write_file(mark + ".list", all);
    };
    pid_t child = fork();
    if (child == 0) {
        make_files("c");
        _exit(0);
    }
    make_files("p");
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    size_t seen = 0;
    for (const std::string mark : {"c", "p"}) {
        std::istringstream paths(support::read_file(mark + ".list"));
        for (std::string path; std::getline(paths, path); ++seen)
            EXPECT_EQ(support::read_file(path), mark) << path;
    }
    EXPECT_EQ(seen, size_t{2 * files});
}

// Another process changes what the directory's name leads to.
TEST(opentmp, a_swapped_directory_gives_new_files_only) {
    ASSERT_EQ(mkdir("one", 0755), 0);
    ASSERT_EQ(mkdir("two", 0755), 0);
    support::write_file("victim", "untouched");
    for (char letter = 'a'; letter <= 'z'; ++letter)
        occupy(std::string("two/x04464") + letter, 0);
    ASSERT_EQ(symlink("one", "link"), 0);
    pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        for (int i = 0;; ++i) {
            unlink("next");
            if (symlink(i % 2 == 0 ? "two" : "one", "next") != 0) _exit(1);
            rename("next", "link");
        }
    }
    for (int i = 0; i < 2000; ++i) {
        int descriptor = -1;
        char *path = opentmp("link", "x", 0600, &descriptor);
        struct stat status = {};
        ASSERT_EQ(fstat(descriptor, &status), 0);
        EXPECT_EQ(status.st_mode, S_IFREG | 0600u);
        EXPECT_EQ(status.st_size, 0);
        EXPECT_EQ(status.st_nlink, 1u);
        EXPECT_EQ(write(descriptor, "new", 3), 3);
        close(descriptor);
        free(path);
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_EQ(support::read_file("victim"), "untouched");
}

TEST(opentmp, without_a_directory_tmpdir_is_asked_each_time) {
    ASSERT_EQ(mkdir("one", 0755), 0);
    ASSERT_EQ(mkdir("two", 0755), 0);
    setenv("TMPDIR", "one", 1);
    EXPECT_EQ(path_for(nullptr, "x"), "one/x04464a");
    setenv("TMPDIR", "two", 1);
    EXPECT_EQ(path_for(nullptr, "x"), "two/x04464b");
    EXPECT_EQ(path_for("one", "x"), "one/x04464c");
    unsetenv("TMPDIR");
    std::string path = path_for(nullptr, "tovan-test-");
    EXPECT_EQ(path.rfind("/tmp/tovan-test-", 0), 0u) << path;
    unlink(path.c_str());
}

TEST(opentmp, directories_of_no_use_are_fatal) {
    support::write_file("plain", "");
    const std::string longest(5000, 'x');
    const struct {
        std::string directory;
        const char *reason;
    } rows[] = {
        {"missing", "No such file or directory"},
        {"plain", "Not a directory"},
        {longest, "File name too long"},
        {"/proc", "No such file or directory"},
    };
    for (const auto &row : rows) {
        std::string text = "test: opentmp: " + row.directory +
                           "/x04464a.c: " + row.reason + "\n";
        setenv("TMPDIR", row.directory.c_str(), 1);
        EXPECT_FATAL(path_for(nullptr, "x.c"), 255, text);
        EXPECT_FATAL(path_for(row.directory.c_str(), "x.c"), 255, text);
    }
}

TEST(opentmp, an_empty_tmpdir_is_the_root) {
    setenv("TMPDIR", "", 1);
    support::fail_creations({EROFS});
    EXPECT_FATAL(path_for(nullptr, "x"), 255,
                 "test: opentmp: /x04464a: Read-only file system\n");
}

TEST(opentmp, failures_of_open_are_fatal_at_once) {
    for (int reason : {EACCES, EIO, EMFILE, ENFILE, ENOSPC, EDQUOT, ENOMEM,
                       EROFS, ELOOP, EPERM}) {
        support::fail_creations({reason});
        EXPECT_FATAL(path_for(".", "x"), 255,
                     std::string("test: opentmp: ./x04464a: ") +
                         strerror(reason) + "\n");
    }
}

TEST(opentmp, signals_are_survived) {
    support::fail_creations(std::vector<int>(100, EINTR));
    EXPECT_EQ(path_for(".", "x"), "./x04464a");
}

TEST(mktmplate, joins_the_directory_and_the_template) {
    const struct {
        const char *directory;
        const char *path;
    } rows[] = {{"/var/tmp", "/var/tmp/fooXXXXXX"},
                {"relative/", "relative//fooXXXXXX"},
                {"", "/fooXXXXXX"},
                {nullptr, "/tmp/fooXXXXXX"}};
    for (const auto &row : rows) {
        support::outcome end = support::in_child([&] {
            unsetenv("TMPDIR");
            if (row.directory != nullptr) setenv("TMPDIR", row.directory, 1);
            char *path = mktmplate("fooXXXXXX");
            puts(path);
            free(path);
        });
        EXPECT_EQ(end.out, std::string(row.path) + "\n");
    }
}

TEST(mktmplate, keeps_its_first_directory) {
    char first[] = "TMPDIR=/first";
    putenv(first);
    char *one = mktmplate("");
    strcpy(first, "TMPDIR=/other");
    char *two = mktmplate("x");
    EXPECT_STREQ(one, "/first/");
    EXPECT_STREQ(two, "/first/x");
    free(one);
    free(two);
    unsetenv("TMPDIR");
}

}  // namespace
