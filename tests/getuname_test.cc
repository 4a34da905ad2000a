// getuname_test.cc: names of numbers, with entries of the test's own.
#include <gtest/gtest.h>
#include <string.h>
#include <tovan/gethome.h>

namespace {

struct passwd user;
struct group group_entry;
std::string name;
int lookups = 0;
bool is_known = true;

}  // namespace

// Every number has an entry named after it, unless is_known is false.
extern "C" {

struct passwd *getpwuid(uid_t number) {
    ++lookups;
    name = "u" + std::to_string(static_cast<int>(number)) + "+x+y";
    if (number % 2 == 0) name = "even" + std::to_string(number);
    user.pw_name = name.data();
    return is_known ? &user : nullptr;
}

struct group *getgrgid(gid_t number) {
    ++lookups;
    name = "g+" + std::to_string(static_cast<int>(number));
    group_entry.gr_name = name.data();
    return is_known ? &group_entry : nullptr;
}

}  // extern "C"

namespace {

TEST(getuname, a_name_behind_its_first_plus) {
    EXPECT_STREQ(getuname(4), "even4");
    EXPECT_STREQ(getuname(5), "x+y");
}

TEST(getgname, getgname_keeps_the_whole_name) {
    EXPECT_STREQ(getgname(5), "g+5");
}

// The two functions share their rules for slots.
struct named {
    const char *(*look_up)(int number);
};

class names_by_number : public testing::TestWithParam<named> {};

INSTANTIATE_TEST_SUITE_P(both, names_by_number,
                         testing::Values(named{getuname}, named{getgname}));

TEST_P(names_by_number, one_look_up_while_a_name_is_kept) {
    const char *first = GetParam().look_up(0);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(GetParam().look_up(0), first);
    EXPECT_EQ(lookups, 1);
    for (int number = 1; number < 64; ++number)
        GetParam().look_up(number);
    EXPECT_EQ(lookups, 64);
    for (int number = 0; number < 64; ++number)
        GetParam().look_up(number);
    EXPECT_EQ(lookups, 64);
    EXPECT_EQ(GetParam().look_up(0), first);
}

TEST_P(names_by_number, numbers_64_apart_evict_one_another) {
    std::string one = GetParam().look_up(2);
    std::string other = GetParam().look_up(66);
    EXPECT_NE(one, other);
    EXPECT_EQ(GetParam().look_up(2), one);
    EXPECT_EQ(GetParam().look_up(66), other);
    EXPECT_EQ(lookups, 4);
}

TEST_P(names_by_number, without_an_entry_the_number) {
    is_known = false;
    EXPECT_STREQ(GetParam().look_up(2147483647), "2147483647");
    EXPECT_STREQ(GetParam().look_up(7), "7");
    EXPECT_STREQ(GetParam().look_up(7), "7");
    EXPECT_EQ(lookups, 2);
}

TEST_P(names_by_number, a_negative_number_is_looked_up_every_time) {
    GetParam().look_up(-2);
    GetParam().look_up(-2);
    EXPECT_EQ(lookups, 2);
    is_known = false;
    EXPECT_STREQ(GetParam().look_up(-2), "-2");
    EXPECT_STREQ(GetParam().look_up(-2147483647 - 1), "-2147483648");
    EXPECT_EQ(lookups, 4);
    EXPECT_STREQ(GetParam().look_up(62), "62");
}

TEST(getuname, users_and_groups_have_tables_of_their_own) {
    getuname(6);
    getgname(6);
    EXPECT_STREQ(getuname(6), "even6");
    EXPECT_STREQ(getgname(6), "g+6");
    EXPECT_EQ(lookups, 2);
}

}  // namespace
