// simplify_test.cc: paths made plain and absolute.
#include "support/child.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <tovan/chkalloc.h>
#include <tovan/simplify.h>
#include <unistd.h>
#include <string>
#include <vector>

namespace {

std::string simplified(const std::string &path, int chksym = 0) {
    char *copy = savestr(path.c_str());
    EXPECT_EQ(simplify(copy, chksym), copy);
    std::string result = copy;
    free(copy);
    return result;
}

TEST(simplify, simplify_rows) {
    const struct {
        const char *path;
        const char *result;
    } rows[] = {
        {"a/./b//c/", "a/b/c"},
        {"/../x", "/x"},
        {"../a/../..", "../.."},
        {"a/..", "."},
        {"", ""},
        {"/", "/"},
        {"//", "/"},
        {"///a", "/a"},
        {".", "."},
        {"./", "."},
        {"./.", "."},
        {"..", ".."},
        {"../", ".."},
        {"../..", "../.."},
        {"/..", "/"},
        {"/../..", "/"},
        {"/.", "/"},
        {"a", "a"},
        {"a/", "a"},
        {"a//b", "a/b"},
        {".x", ".x"},
        {"..x/..", "."},
        {"...", "..."},
        {"a/...", "a/..."},
        {"a/b/../../c", "c"},
        {"a/../../c", "../c"},
        {"/a/b/../..", "/"},
        {"a/b/..", "a"},
        {"x/../y/../z", "z"},
        {"/a/./../b/", "/b"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(simplified(row.path), row.result) << row.path;
}

TEST(simplify, a_double_root_stays_where_the_trait_says_so) {
    setenv("DBLESLASHROOT", "1", 1);
    EXPECT_EQ(simplified("//host/../x"), "//x");
    EXPECT_EQ(simplified("//"), "//");
    EXPECT_EQ(simplified("///a"), "//a");
    EXPECT_EQ(simplified("//../.."), "//");
    EXPECT_EQ(simplified("/a//b"), "/a/b");
    setenv("DBLESLASHROOT", "0", 1);
    EXPECT_EQ(simplified("//x"), "//x") << "asked once per process";
}

TEST(simplify, needs_no_traits_for_other_paths) {
    unsetenv("DBLESLASHROOT");
    EXPECT_EQ(simplified("/a/../b"), "/b");
    EXPECT_FATAL(simplified("//a"), 255,
                 "test: <morva-root>/data/traits directory does not exist\n");
}

TEST(simplify, keeps_the_way_up_from_a_symbolic_link) {
    support::make_folders("real/deep");
    ASSERT_EQ(symlink("real/deep", "link"), 0);
    EXPECT_EQ(simplified("link/../x", 1), "link/../x");
    EXPECT_EQ(simplified("link/../../x", 1), "link/../../x");
    EXPECT_EQ(simplified("./link//../x", 1), "link/../x");
    EXPECT_EQ(simplified("link/a/../..", 1), "link/..");
    EXPECT_EQ(simplified("real/../x", 1), "x");
    EXPECT_EQ(simplified("link/../x", 0), "x");
}

// The rules once more, over a vector of components.
std::string plain_model(const std::string &path) {
    if (path.empty()) return path;
    bool absolute = path[0] == '/';
    std::vector<std::string> kept;
    std::string component;
    for (char c : path + "/") {
        if (c != '/') {
            component += c;
            continue;
        }
        bool has_previous = !kept.empty() && kept.back() != "..";
        if (component == ".." && has_previous) {
            kept.pop_back();
        } else if (component == ".." ? !absolute
                                     : !component.empty() && component != ".") {
            kept.push_back(component);
        }
        component.clear();
    }
    std::string result = absolute ? "/" : "";
    for (size_t i = 0; i < kept.size(); i++)
        result += (i > 0 ? "/" : "") + kept[i];
    return result.empty() ? "." : result;
}

TEST(simplify, agrees_with_a_plain_model_on_all_short_paths) {
    const std::string letters = "a./";
    for (int length = 0; length <= 9; length++) {
        std::string path(static_cast<size_t>(length), 'a');
        int count = 1;
        for (int i = 0; i < length; i++)
            count *= 3;
        for (int number = 0; number < count; number++) {
            int rest = number;
            for (char &c : path) {
                c = letters[static_cast<size_t>(rest % 3)];
                rest /= 3;
            }
            ASSERT_EQ(simplified(path), plain_model(path)) << path;
        }
    }
}

TEST(simplify, a_long_path_takes_linear_time) {
    std::string path;
    for (int i = 0; i < 1000000; i++)
        path += "a/../b/../";
    EXPECT_EQ(simplified(path + "end"), "end");
}

TEST(p_resolve, p_resolve_rows) {
    const struct {
        const char *path;
        const char *cwd;
        const char *result;
    } rows[] = {
        {"/x/../y", "/d", "/x/../y"}, {"x", "/d", "/d/x"},   {"", "/d", "/d/"},
        {"../x", "/d/", "/d//../x"},  {"x", "rel", "rel/x"},
    };
    for (const auto &row : rows) {
        char *result = p_resolve(row.path, row.cwd);
        EXPECT_STREQ(result, row.result);
        free(result);
    }
}

TEST(p_resolve, a_null_cwd_is_the_current_directory) {
    char here[4096];
    ASSERT_NE(getcwd(here, sizeof here), nullptr);
    char *result = p_resolve("x", nullptr);
    EXPECT_EQ(result, std::string(here) + "/x");
    free(result);
}

TEST(p_resolve, no_current_directory_is_fatal_even_for_absolute_paths) {
    auto lost = [](const char *path) {
        mkdir("gone", 0700);
        if (chdir("gone") == 0 && rmdir("../gone") == 0)
            p_resolve(path, nullptr);
    };
    const char *message = "test: getcwd: No such file or directory\n";
    EXPECT_FATAL(lost("x"), 255, message);
    EXPECT_FATAL(lost("/x"), 255, message);
}

}  // namespace
