// mk_temp_test.cc: names for temporary files, in a process of a chosen id.
#include "support/child.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <tovan/opentmp.h>
#include <unistd.h>
#include <string>

namespace {

pid_t process = 70000;

}  // namespace

extern "C" pid_t getpid() noexcept {
    return process;
}

namespace {

// The name found, or "none"; what stands in the pattern then goes to `left`.
std::string name_for(std::string pattern, std::string *left = nullptr) {
    char *result = mk_temp(pattern.data());
    if (result != nullptr) {
        EXPECT_EQ(result, pattern.data());
    }
    if (left != nullptr) *left = pattern;
    return result != nullptr ? pattern : "none";
}

TEST(mk_temp, the_process_and_a_letter_take_the_place) {
    const struct {
        pid_t process;
        const char *pattern;
        const char *name;
    } rows[] = {
        {70000, "fooXXXXXX", "fooa04464"}, {1, "XXXXXX", "a00001"},
        {65535, "x.XXXXXX", "x.a65535"},   {65536, "XXXXXXXXX", "XXXa00000"},
        {4194303, "xXXXXXX", "xa65535"},   {99999, "./XXXXXX", "./a34463"},
    };
    for (const auto &row : rows) {
        process = row.process;
        EXPECT_EQ(name_for(row.pattern), row.name);
        EXPECT_FALSE(support::file_exists(row.name)) << "nothing is made";
    }
}

TEST(mk_temp, letters_follow_one_another) {
    process = 12;
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        std::string expected = std::string("t") + letter + "00012";
        EXPECT_EQ(name_for("tXXXXXX"), expected);
        support::write_file(expected, "");
    }
    EXPECT_EQ(name_for("tXXXXXX"), "none");
    ASSERT_EQ(unlink("tq00012"), 0);
    EXPECT_EQ(name_for("tXXXXXX"), "tq00012");
}

TEST(mk_temp, whatever_has_the_name_keeps_it) {
    process = 12;
    support::write_file("victim", "untouched");
    ASSERT_EQ(symlink("victim", "ta00012"), 0);
    support::make_folders("tb00012");
    ASSERT_EQ(mkfifo("tc00012", 0600), 0);
    ASSERT_EQ(symlink("nothing", "td00012"), 0);
    ASSERT_EQ(symlink("te00012", "te00012"), 0);
    EXPECT_EQ(name_for("tXXXXXX"), "td00012") << "it leads nowhere";
    ASSERT_EQ(unlink("td00012"), 0);
    support::write_file("td00012", "");
    EXPECT_EQ(name_for("tXXXXXX"), "tf00012") << "a circle is no free name";
    EXPECT_EQ(support::read_file("victim"), "untouched");
}

TEST(mk_temp, only_a_missing_name_is_free) {
    support::write_file("plain", "");
    std::string left;
    EXPECT_EQ(name_for("plain/XXXXXX", &left), "none");
    EXPECT_EQ(left[6], 'z');
    EXPECT_EQ(name_for(std::string(300, 'x') + "XXXXXX"), "none");
    EXPECT_NE(name_for("no-directory/XXXXXX"), "none");
}

TEST(mk_temp, another_end_is_a_logic_error) {
    for (const char *pattern :
         {"", "XXXXX", "fooXXXXX", "fooXXXXXXx", "XXXXXX.c", "fooxxxxxx"}) {
        EXPECT_FATAL(name_for(pattern), 255,
                     std::string("test: Logic error: mktemp('") + pattern +
                         "') does not end with 'XXXXXX'\n");
    }
}

}  // namespace
