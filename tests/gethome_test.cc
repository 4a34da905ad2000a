// gethome_test.cc: users and their directories, with password entries of the
// test's own.
#include "support/child.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/gethome.h>
#include <unistd.h>

namespace {

struct known_user {
    const char *name;
    uid_t number;
    const char *home;
};

const known_user known[] = {
    {"real", 1000, "/home/real"},    {"login", 1001, "/home/login"},
    {"envy", 1002, "/home/envy"},    {"ann", 1003, "/home/ann"},
    {"team+bob", 1004, "/home/bob"},
};

// What the replaced functions below answer and count.
struct passwd entry;
bool has_real_entry = true;
const char *login_name = "login";
int lookups = 0;
int closings = 0;

struct passwd *entry_of(const known_user *user) {
    entry = {};
    entry.pw_name = const_cast<char *>(user->name);
    entry.pw_dir = const_cast<char *>(user->home);
    entry.pw_uid = user->number;
    return &entry;
}

}  // namespace

extern "C" {

struct passwd *getpwnam(const char *name) {
    ++lookups;
    for (const known_user &user : known) {
        if (strcmp(user.name, name) == 0) return entry_of(&user);
    }
    return nullptr;
}

struct passwd *getpwuid(uid_t number) {
    ++lookups;
    for (const known_user &user : known) {
        if (user.number == number && has_real_entry) return entry_of(&user);
    }
    return nullptr;
}

void endpwent(void) {
    ++closings;
}

char *getlogin(void) {
    return const_cast<char *>(login_name);
}

uid_t getuid(void) noexcept {
    return 1000;
}

uid_t geteuid(void) noexcept {
    return 4711;
}

}  // extern "C"

namespace {

// Who the process is, by the three sources of a user's name.
struct who {
    const char *environment;  // the text of the variable "WHO", or null
    const char *login;
    bool real;
};

void become(const who &one) {
    strcpy(envuser, "WHO");
    unsetenv("WHO");
    if (one.environment != nullptr) setenv("WHO", one.environment, 1);
    login_name = one.login;
    has_real_entry = one.real;
}

std::string shown(const char *text) {
    return text != nullptr ? text : "(null)";
}

TEST(envuser, names_logname_at_first) {
    EXPECT_STREQ(envuser, "LOGNAME");
    setenv("LOGNAME", "ann", 1);
    EXPECT_STREQ(getnmuser(nullptr, nullptr), "ann");
}

TEST(envuser, has_room_for_63_characters) {
    std::string name(63, 'E');
    strcpy(envuser, name.c_str());
    setenv(name.c_str(), "ann", 1);
    EXPECT_STREQ(getnmuser(nullptr, nullptr), "ann");
}

TEST(usetype, usetype_rows) {
    EXPECT_EQ(usetype(nullptr), 1);
    EXPECT_EQ(usetype("-"), 2);
    EXPECT_EQ(usetype(""), 3);
    EXPECT_EQ(usetype("ann"), 4);
    EXPECT_EQ(usetype("--"), 4);
    EXPECT_EQ(usetype("-x"), 4);
    envuser[0] = '\0';
    EXPECT_EQ(usetype(nullptr), 0);
    EXPECT_EQ(usetype("-"), 2);
    EXPECT_EQ(usetype(""), 3);
    EXPECT_EQ(usetype("ann"), 4);
}

TEST(getpwuser, getpwuser_rows) {
    const struct {
        const char *user;
        who one;
        const char *name;
    } rows[] = {
        {nullptr, {"envy", "login", true}, "envy"},
        {nullptr, {"nobody", "login", true}, "(null)"},
        {nullptr, {"", "login", true}, "(null)"},
        {nullptr, {nullptr, "login", true}, "login"},
        {nullptr, {nullptr, nullptr, true}, "real"},
        {nullptr, {nullptr, nullptr, false}, "(null)"},
        {"-", {"envy", "login", true}, "login"},
        {"-", {"envy", "nobody", true}, "(null)"},
        {"-", {"envy", nullptr, true}, "real"},
        {"", {"envy", "login", true}, "real"},
        {"", {"envy", "login", false}, "(null)"},
        {"ann", {"envy", "login", true}, "ann"},
        {"nobody", {"envy", "login", true}, "(null)"},
    };
    for (const auto &row : rows) {
        become(row.one);
        lookups = closings = 0;
        const struct passwd *result = getpwuser(row.user);
        EXPECT_EQ(shown(result != nullptr ? result->pw_name : nullptr),
                  row.name)
            << shown(row.user) << " " << shown(row.one.environment);
        EXPECT_EQ(lookups, 1);
        EXPECT_EQ(closings, 1);
    }
}

TEST(getpwuser, nobody_without_an_envuser) {
    envuser[0] = '\0';
    EXPECT_EQ(getpwuser(nullptr), nullptr);
    EXPECT_EQ(lookups, 0);
}

TEST(getnmuser, getnmuser_rows) {
    const struct {
        const char *user;
        who one;
        const char *fallback;
        const char *name;
    } rows[] = {
        {nullptr, {"any text", "login", true}, "d", "any text"},
        {nullptr, {"", "login", true}, "d", ""},
        {nullptr, {nullptr, "login", true}, "d", "login"},
        {nullptr, {nullptr, nullptr, true}, "d", "real"},
        {nullptr, {nullptr, nullptr, false}, "d", "d"},
        {nullptr, {nullptr, nullptr, false}, nullptr, "(null)"},
        {"-", {"envy", "login", true}, "d", "login"},
        {"-", {"envy", nullptr, true}, "d", "real"},
        {"-", {"envy", nullptr, false}, "d", "d"},
        {"", {"envy", "login", true}, "d", "real"},
        {"", {"envy", "login", false}, "d", "d"},
        {"", {"envy", "login", false}, nullptr, "(null)"},
        {"zoe", {"envy", "login", true}, "d", "zoe"},
        // behind the first "+"
        {"a+b", {"envy", "login", true}, "d", "b"},
        {"a+b+c", {"envy", "login", true}, "d", "b+c"},
        {"a+", {"envy", "login", true}, "d", ""},
        {nullptr, {"x+y", "login", true}, "d", "y"},
        {"-", {nullptr, "x+y", true}, "d", "y"},
        {"", {nullptr, nullptr, false}, "p+q", "q"},
    };
    for (const auto &row : rows) {
        become(row.one);
        EXPECT_EQ(shown(getnmuser(row.user, row.fallback)), row.name)
            << shown(row.user) << " " << shown(row.one.environment);
    }
}

TEST(getnmuser, nobody_gets_the_fallback) {
    envuser[0] = '\0';
    EXPECT_STREQ(getnmuser(nullptr, "d"), "d");
    EXPECT_EQ(getnmuser(nullptr, nullptr), nullptr);
    EXPECT_EQ(lookups, 0);
}

TEST(gethome, the_directory_of_the_entry) {
    become({"envy", "login", true});
    EXPECT_STREQ(gethome("ann", 0), "/home/ann");
    EXPECT_STREQ(gethome(nullptr, 1), "/home/envy");
    EXPECT_STREQ(gethome("-", 1), "/home/login");
    EXPECT_STREQ(gethome("", 1), "/home/real");
    EXPECT_EQ(gethome("zoe", 0), nullptr);
}

TEST(gethome, a_must_without_an_entry_is_fatal) {
    become({nullptr, nullptr, false});
    EXPECT_FATAL(gethome("zoe", 1), 255, "test: zoe: no such user\n");
    EXPECT_FATAL(gethome("", 1), 255, "test: : no such user\n");
    EXPECT_FATAL(gethome(nullptr, 1), 255, "test: NULL: no such user\n");
}

TEST(home_morva, home_morva_takes_the_variable_as_it_is) {
    setenv("HOME_MORVA", "/my/morva", 1);
    setenv("HOME", "/my/home", 1);
    EXPECT_STREQ(home_morva(nullptr), "/my/morva");
    EXPECT_STREQ(home_morva(""), "/my/morva");
    EXPECT_STREQ(home_morva("ann"), "/home/ann/.morva");
    EXPECT_STREQ(home_morva("-"), "/home/login/.morva");
}

TEST(home_morva, home_with_only_home_set) {
    setenv("HOME", "/my/home", 1);
    EXPECT_STREQ(home_morva(nullptr), "/my/home/.morva");
    EXPECT_STREQ(home_morva(""), "/my/home/.morva");
}

TEST(home_morva, without_home_the_entry_counts) {
    become({"envy", "login", true});
    unsetenv("HOME");
    EXPECT_STREQ(home_morva(nullptr), "/home/envy/.morva");
    EXPECT_STREQ(home_morva(""), "/home/real/.morva");
}

TEST(home_morva, a_variable_set_to_nothing_is_set) {
    setenv("HOME", "", 1);
    EXPECT_STREQ(home_morva(nullptr), "/.morva");
    setenv("HOME_MORVA", "", 1);
    EXPECT_STREQ(home_morva(""), "");
}

TEST(home_morva, answers_the_same_user_from_the_buffer) {
    const char *first = home_morva("ann");
    lookups = 0;
    std::string again = "ann";
    EXPECT_EQ(home_morva(again.c_str()), first);
    EXPECT_EQ(lookups, 0);
    EXPECT_STREQ(home_morva("envy"), "/home/envy/.morva");
    EXPECT_STREQ(first, "/home/envy/.morva");
    EXPECT_STREQ(home_morva("ann"), "/home/ann/.morva");
    EXPECT_EQ(lookups, 2);
}

TEST(home_morva, null_and_empty_are_different_users) {
    setenv("HOME", "/first", 1);
    EXPECT_STREQ(home_morva(nullptr), "/first/.morva");
    setenv("HOME", "/second", 1);
    EXPECT_STREQ(home_morva(nullptr), "/first/.morva");
    EXPECT_STREQ(home_morva(""), "/second/.morva");
    setenv("HOME", "/third", 1);
    EXPECT_STREQ(home_morva(""), "/second/.morva");
    EXPECT_STREQ(home_morva(nullptr), "/third/.morva");
}

TEST(home_morva, an_unknown_user_is_fatal) {
    EXPECT_FATAL(home_morva("zoe"), 255, "test: zoe: no such user\n");
    become({nullptr, nullptr, false});
    unsetenv("HOME");
    EXPECT_FATAL(home_morva(nullptr), 255, "test: NULL: no such user\n");
}

TEST(home_morva, results_of_99_characters_fit) {
    std::string home = "/" + std::string(91, 'h');
    setenv("HOME", home.c_str(), 1);
    EXPECT_EQ(home_morva(nullptr), home + "/.morva");
    std::string own = "/" + std::string(98, 'o');
    setenv("HOME_MORVA", own.c_str(), 1);
    EXPECT_EQ(home_morva(""), own);
}

TEST(home_morva, a_longer_result_is_fatal) {
    std::string home = "/" + std::string(92, 'h');
    setenv("HOME", home.c_str(), 1);
    EXPECT_FATAL(home_morva(nullptr), 255,
                 "test: " + home + ": home directory name too long\n");
    std::string own(100, 'o');
    setenv("HOME_MORVA", own.c_str(), 1);
    EXPECT_FATAL(home_morva(nullptr), 255,
                 "test: " + own + ": home directory name too long\n");
}

TEST(ingroup, compares_the_numbers) {
    EXPECT_EQ(ingroup(5, 5), 1);
    EXPECT_EQ(ingroup(5, 6), 0);
    EXPECT_EQ(ingroup(-1, -1), 1);
}

TEST(gidget, gidget_gives_the_effective_user_id) {
    EXPECT_NE(getegid(), 4711u);
    EXPECT_EQ(gidget(), 4711);
    dumb_dos_user();
}

}  // namespace
