// ixpath_test.cc: drive-letter paths in the form of the tree.
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <tovan/dospath.h>

namespace {

const char maps[] =
    "U> w:\\users /u\n"
    "U> w:\\users\\src /never\n"
    "U> pre /long\n"
    "U> /slash /back\\slash\n"
    "D> d:\\never /d\n"
    "M> /m /mapped\n";

class ixpath_ : public testing::Test {
  protected:
    dy output = {};

    ixpath_() {
        support::write_file("morva/data/roots.map", maps);
        dynew(&output, 0);
    }

    ~ixpath_() override {
        free(output.buffer);
    }
};

TEST_F(ixpath_, ixpath_rows) {
    const char *const rows[][2] = {
        {"d:\\src\\\\file.txt", "//D/src/file.txt"},
        {"d:", "//D"},
        {"d:rel", "//Drel"},
        {"D:\\src", "D:/src"},
        {"dd:\\src", "dd:/src"},
        {"9:\\x", "9:/x"},
        {":\\x", ":/x"},
        {"", ""},
        {"\\", "/"},
        {"\\\\\\", "/"},
        {"a\\b/c\\/d", "a/b/c//d"},
        {"a//b", "a//b"},
        {"a\\\\b\\\\\\\\c\\", "a/b/c/"},
        {"/m/x", "/m/x"},
        // root maps of type U
        {"w:\\users\\x", "/u/x"},
        {"w:\\users", "/u"},
        {"w:\\users\\src\\x", "/u/src/x"},
        {"w:\\user\\x", "//W/user/x"},
        {"w:\\\\users\\x", "//W/users/x"},
        {"w:/users/x", "//W/users/x"},
        {"/slash\\x", "/back\\slash/x"},
    };
    for (const auto &row : rows)
        EXPECT_STREQ(ixpath(&output, row[0], 1), row[1]) << row[0];
}

TEST_F(ixpath_, ixpath_prefix_may_end_anywhere) {
    EXPECT_STREQ(ixpath(&output, "w:\\users2\\x", 1), "/u2/x");
    EXPECT_STREQ(ixpath(&output, "prefix", 1), "/longfix");
}

TEST_F(ixpath_, flags_choose_what_becomes_of_the_output) {
    EXPECT_STREQ(ixpath(&output, "a:", 2), "//A");
    EXPECT_STREQ(ixpath(&output, "b:", 2), "//A //B");
    EXPECT_STREQ(ixpath(&output, "c:", 0), "//A //B//C");
    EXPECT_STREQ(ixpath(&output, "d:", 3), "//D");
    dystr(&output, " ");
    EXPECT_STREQ(ixpath(&output, "e:", 2), "//D  //E");
    EXPECT_STREQ(ixpath(&output, "f:", 1), "//F");
    EXPECT_STREQ(ixpath(&output, "g:", ~3), "//F//G");
}

TEST_F(ixpath_, paths_of_any_length) {
    std::string path = "d:" + std::string(100000, '\\') + "x";
    std::string expected = "//D/x";
    for (int i = 0; i < 50000; ++i) {
        path += "\\\\ab";
        expected += "/ab";
    }
    EXPECT_STREQ(ixpath(&output, path.c_str(), 1), expected.c_str());
}

}  // namespace
