// globber_test.cc: the paths that match a pattern.
#include "support/child.h"
#include "support/tree.h"

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <tovan/fmatch.h>
#include <tovan/globber.h>
#include <unistd.h>
#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace {

using paths = std::vector<std::string>;

// All paths, sorted: directories give theirs in any order.
paths glob_all(const std::string &pattern) {
    paths found;
    for (char *path = globber(pattern.c_str()); path != nullptr;
         path = globber(nullptr)) {
        found.push_back(path);
    }
    std::sort(found.begin(), found.end());
    return found;
}

void make_tree() {
    for (const char *file :
         {"a.c", "b.c", "b.h", ".hidden", "x/1.c", "x/2.h", "x/sub/deep.c",
          "y/1.c", "y/sub/other.c", "y/sub/more/end", "z/only"})
        support::write_file(file, "");
}

TEST(globber, names_of_the_current_directory) {
    make_tree();
    EXPECT_EQ(glob_all("*.c"), (paths{"a.c", "b.c"}));
    EXPECT_EQ(glob_all("b.?"), (paths{"b.c", "b.h"}));
    EXPECT_EQ(glob_all("[xy]"), (paths{"x", "y"}));
    EXPECT_EQ(glob_all("*.{c,h}"), (paths{"a.c", "b.c", "b.h"}));
    EXPECT_EQ(glob_all("!*.c*"), glob_all("!*.c"));
    EXPECT_EQ(glob_all("nothing*"), paths{});
}

TEST(globber, all_names_but_dot_and_dots) {
    make_tree();
    EXPECT_EQ(glob_all("*"),
              (paths{".hidden", "a.c", "b.c", "b.h", "x", "y", "z"}));
    EXPECT_EQ(glob_all(".*"), paths{".hidden"});
    EXPECT_EQ(glob_all("x/.*"), paths{});
}

TEST(globber, literal_directories_before_the_first_wildcard) {
    make_tree();
    EXPECT_EQ(glob_all("x/*.c"), paths{"x/1.c"});
    EXPECT_EQ(glob_all("y/sub/*"), (paths{"y/sub/more", "y/sub/other.c"}));
    EXPECT_EQ(glob_all("./y/../x/*"),
              (paths{"./y/../x/1.c", "./y/../x/2.h", "./y/../x/sub"}));
    EXPECT_EQ(glob_all("none/*"), paths{});
    EXPECT_EQ(glob_all("a.c/*"), paths{});
}

TEST(globber, several_levels) {
    make_tree();
    EXPECT_EQ(glob_all("*/*.c"), (paths{"x/1.c", "y/1.c"}));
    EXPECT_EQ(glob_all("*/sub/*.c"), (paths{"x/sub/deep.c", "y/sub/other.c"}));
    EXPECT_EQ(glob_all("?/*/*"),
              (paths{"x/sub/deep.c", "y/sub/more", "y/sub/other.c"}));
    EXPECT_EQ(glob_all("*/*/*/*"), paths{"y/sub/more/end"});
    EXPECT_EQ(glob_all("*/*/*/*/*"), paths{});
}

TEST(globber, literal_text_behind_a_wildcard_has_to_exist) {
    make_tree();
    EXPECT_EQ(glob_all("*/1.c"), (paths{"x/1.c", "y/1.c"}));
    EXPECT_EQ(glob_all("*/sub/more/end"), paths{"y/sub/more/end"});
    EXPECT_EQ(glob_all("*/sub/deep.c"), paths{"x/sub/deep.c"});
    EXPECT_EQ(glob_all("*/none"), paths{});
    EXPECT_EQ(glob_all("*/../a.c"),
              (paths{"x/../a.c", "y/../a.c", "z/../a.c"}));
}

TEST(globber, a_slash_at_the_end_asks_for_directories) {
    make_tree();
    EXPECT_EQ(glob_all("*/"), (paths{"x/", "y/", "z/"}));
    EXPECT_EQ(glob_all("*/sub/"), (paths{"x/sub/", "y/sub/"}));
    EXPECT_EQ(glob_all("*//"), (paths{"x/", "y/", "z/"}));
}

TEST(globber, links_to_directories_are_directories) {
    make_tree();
    ASSERT_EQ(symlink("x", "link"), 0);
    ASSERT_EQ(symlink("nowhere", "lost"), 0);
    EXPECT_EQ(glob_all("l*/1.c"), paths{"link/1.c"});
    EXPECT_EQ(glob_all("l*/"), paths{"link/"});
    EXPECT_EQ(glob_all("l*"), (paths{"link", "lost"}));
    EXPECT_EQ(glob_all("[a-z]/../lost"), paths{});
}

TEST(globber, one_slash_where_parts_join) {
    make_tree();
    char here[4096];
    ASSERT_NE(getcwd(here, sizeof here), nullptr);
    std::string root = here;
    EXPECT_EQ(glob_all(root + "/*.h"), paths{root + "/b.h"});
    EXPECT_EQ(glob_all("x//*.h"), paths{"x/2.h"});
    EXPECT_EQ(glob_all("*//*.h"), paths{"x/2.h"});
    EXPECT_EQ(glob_all("*//2.h"), paths{"x/2.h"});
    EXPECT_EQ(glob_all("*///sub//d*"), paths{"x/sub/d"
                                             "eep.c"});
}

TEST(globber, patterns_from_the_root) {
    paths found = glob_all("/*");
    EXPECT_NE(std::find(found.begin(), found.end(), "/tmp"), found.end());
    for (const std::string &path : found) {
        EXPECT_EQ(path.find_last_of('/'), 0u) << path;
        EXPECT_EQ(access(path.c_str(), F_OK), 0) << path;
    }
    EXPECT_EQ(glob_all("//tm[p]"), paths{"/tmp"});
    EXPECT_EQ(glob_all("/tm?/"), paths{"/tmp/"});
}

TEST(globber, a_pattern_without_wildcards_gives_itself_once) {
    for (const char *pattern : {"no/such/file", "", "/", "a{b,c}", "a/", "!"}) {
        EXPECT_STREQ(globber(pattern), pattern);
        EXPECT_EQ(globber(nullptr), nullptr) << pattern;
        EXPECT_EQ(globber(nullptr), nullptr) << pattern;
    }
}

TEST(globber, nothing_started_and_nothing_left_give_null) {
    EXPECT_EQ(globber(nullptr), nullptr);
    EXPECT_EQ(globber("*"), nullptr) << "an empty directory";
    EXPECT_EQ(globber(nullptr), nullptr);
    support::write_file("f", "");
    EXPECT_STREQ(globber("*"), "f");
    EXPECT_EQ(globber(nullptr), nullptr);
    EXPECT_EQ(globber(nullptr), nullptr);
}

TEST(globber, the_result_may_be_the_next_pattern) {
    support::write_file("a*b/x", "");
    support::write_file("aXb/y", "");
    char *path = globber("a?b");
    ASSERT_NE(path, nullptr);
    while (path != nullptr && std::string(path) != "a*b")
        path = globber(nullptr);
    ASSERT_NE(path, nullptr);
    std::vector<std::string> found;
    for (path = globber(path); path != nullptr; path = globber(nullptr))
        found.push_back(path);
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, (paths{"a*b", "aXb"}));
}

TEST(globber, dump_shows_the_levels) {
    const struct {
        const char *pattern;
        const char *text;
    } rows[] = {
        {"*.c", "pat=*.c\n   0: type=2; dir=.; pat=*.c;\n"},
        {"/*", "pat=/*\n   0: type=1; dir=/; pat=*;\n"},
        {"a/b/x*/c/[de]/f",
         "pat=a/b/x*/c/[de]/f\n"
         "   0: type=4; dir=a/b; pat=x*;\n"
         "   1: type=4; dir=c; pat=[de];\n"
         "   2: type=5; dir=f; pat=;\n"},
        {"*/?",
         "pat=*/?\n"
         "   0: type=2; dir=.; pat=*;\n"
         "   1: type=3; dir=; pat=?;\n"},
        {"*/",
         "pat=*/\n   0: type=2; dir=.; pat=*;\n   1: type=5; dir=; pat=;\n"},
        {"/a/b*", "pat=/a/b*\n   0: type=4; dir=/a; pat=b*;\n"},
        {"a/b", "pat=a/b\n   0: type=5; dir=a/b; pat=;\n"},
        {"", "pat=\n   0: type=5; dir=; pat=;\n"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(support::stderr_of([&] {
                      glob_dump = 1;
                      globber(row.pattern);
                      glob_dump = 0;
                      globber(row.pattern);
                  }),
                  row.text)
            << row.pattern;
    }
}

// Open descriptors of this process.
std::set<int> open_descriptors() {
    std::set<int> found;
    for (int fd = 0; fd < 1024; ++fd) {
        if (fcntl(fd, F_GETFD) != -1) found.insert(fd);
    }
    return found;
}

TEST(globber, one_open_directory_a_level_closed_on_exec) {
    make_tree();
    std::set<int> before = open_descriptors();
    ASSERT_NE(globber("y/*/*/*"), nullptr);
    std::set<int> during = open_descriptors();
    EXPECT_EQ(during.size(), before.size() + 3);
    for (int fd : during) {
        if (before.count(fd) == 0) {
            EXPECT_EQ(fcntl(fd, F_GETFD), FD_CLOEXEC);
        }
    }
    ASSERT_NE(globber("*/*"), nullptr) << "abandons the one before";
    EXPECT_EQ(open_descriptors().size(), before.size() + 2);
    globber("x");
    EXPECT_EQ(open_descriptors(), before);
    glob_all("*/*/*");
    EXPECT_EQ(open_descriptors(), before);
}

TEST(globber, what_cannot_be_opened_is_passed_over) {
    make_tree();
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    ASSERT_EQ(symlink("nowhere", "lost"), 0);
    ASSERT_EQ(symlink("round", "round"), 0);
    ASSERT_EQ(symlink("pipe", "link"), 0);
    EXPECT_EQ(glob_all("*/1.c"), (paths{"x/1.c", "y/1.c"}));
    EXPECT_EQ(glob_all("[lpr]*/*"), paths{});
    EXPECT_EQ(glob_all("pipe/*"), paths{});
    EXPECT_EQ(glob_all("*/" + std::string(5000, 'a') + "/*"), paths{});
}

TEST(globber, many_levels) {
    std::string path = "d";
    std::string pattern = "*";
    for (int i = 0; i < 300; ++i) {
        path += "/d";
        pattern += "/*";
    }
    support::make_folders(path);
    EXPECT_EQ(glob_all(pattern), paths{path});
    std::string long_pattern;
    for (int i = 0; i < 20000; ++i)
        long_pattern += "*/";
    EXPECT_EQ(glob_all(long_pattern), paths{});
}

// --- second opinion: every path of the tree, component by component

void collect(const std::string &prefix, const std::vector<std::string> &parts,
             size_t from, paths *found) {
    if (from == parts.size()) {
        found->push_back(prefix.substr(0, prefix.size() - 1));
        return;
    }
    DIR *directory = opendir(prefix.empty() ? "." : prefix.c_str());
    if (directory == nullptr) return;
    while (const dirent *entry = readdir(directory)) {
        std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        if (fmatch(name.c_str(), parts[from].c_str()))
            collect(prefix + name + "/", parts, from + 1, found);
    }
    closedir(directory);
}

TEST(globber_second_opinion, all_patterns_of_these_components) {
    make_tree();
    const std::vector<std::string> components = {
        "*", "x", "y", "sub", "?", "s*", "*.c", "[xz]", "more"};
    std::vector<std::vector<std::string>> patterns = {{}};
    for (size_t i = 0; patterns[i].size() < 3; ++i) {
        for (const std::string &component : components) {
            patterns.push_back(patterns[i]);
            patterns.back().push_back(component);
        }
    }
    int nonempty = 0;
    for (const auto &parts : patterns) {
        std::string pattern;
        for (const std::string &part : parts)
            pattern += (pattern.empty() ? "" : "/") + part;
        if (pattern.find_first_of("*?[") == std::string::npos) continue;
        paths expected;
        collect("", parts, 0, &expected);
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(glob_all(pattern), expected) << pattern;
        nonempty += !expected.empty();
    }
    EXPECT_GT(nonempty, 50);
}

}  // namespace
