// dospath_test.cc: paths of the tree in drive-letter form.
#include "support/child.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <tovan/dospath.h>
#include <tovan/map_root.h>

namespace {

const char maps[] =
    "D> /u w:/users\n"
    "D> /u/src s:/never\n"
    "D> /top \\\\server/share\n"
    "M> /m /mapped\n"
    "U> /unix u:\n"
    "D> //Dx dx:\n";

class foreign : public testing::Test {
  protected:
    dy output = {};

    foreign() {
        support::write_file("morva/data/roots.map", maps);
        dynew(&output, 0);
    }

    ~foreign() override {
        free(output.buffer);
    }
};

class dospath_ : public foreign {};
class mkfmap_ : public foreign {};
class putpart_ : public foreign {};

TEST_F(dospath_, dospath_rows) {
    const struct {
        const char *path;
        const char *extension;
        int mode;
        const char *result;
    } rows[] = {
        // the drive form of the tree
        {"//D/src/file.txt", nullptr, 0, "d:/src/file.txt"},
        {"//D/src/file.txt", nullptr, 1, "d:\\src\\file.txt"},
        {"//D/src/file.txt", nullptr, 2, "d:\\\\src\\\\file.txt"},
        {"//D/src/file.txt", nullptr, 9, "d:\\\\src\\\\file.txt"},
        {"//D/src/file.txt", nullptr, -1, "d:\\src\\file.txt"},
        {"//A", nullptr, 1, "a:"},
        {"//Z/", nullptr, 1, "z:\\"},
        {"//d/x", nullptr, 0, "//d/x"},
        {"//DD/x", nullptr, 0, "//DD/x"},
        {"//9/x", nullptr, 0, "//9/x"},
        {"/D/x", nullptr, 0, "/D/x"},
        {"///D/x", nullptr, 0, "///D/x"},
        {"//", nullptr, 1, "\\\\"},
        // root maps of type D
        {"/u/x/y", nullptr, 0, "w:/users/x/y"},
        {"/u/x/y", nullptr, 1, "w:\\users\\x\\y"},
        {"/u/x/y", nullptr, 2, "w:\\\\users\\\\x\\\\y"},
        {"/u", nullptr, 0, "w:/users"},
        {"/u/src/x", nullptr, 0, "w:/users/src/x"},
        {"/usr/x", nullptr, 1, "\\usr\\x"},
        {"/top/x", nullptr, 1, "\\\\server\\share\\x"},
        {"//Dx/y", nullptr, 1, "dx:\\y"},
        {"/m/x", nullptr, 0, "/m/x"},
        {"/unix/x", nullptr, 0, "/unix/x"},
        // no root
        {"", nullptr, 1, ""},
        {"u/x", nullptr, 1, "u\\x"},
        {"a//b", nullptr, 2, "a\\\\\\\\b"},
        {"a\\b/c", nullptr, 1, "a\\b\\c"},
        // another extension
        {"/x/file.txt", ".obj", 0, "/x/file.obj"},
        {"/x/file.txt", ".obj", 1, "\\x\\file.obj"},
        {"//D/x/file.txt", ".obj", 0, "d:/x/file.obj"},
        {"/u/file", ".obj", 0, "w:/users/file.obj"},
        {"/u", ".obj", 0, "w:/users.obj"},
        {"a.b.c", ".o", 0, "a.b.o"},
        {"a.b", "", 0, "a"},
        {".a", "o", 0, "o"},
        {"a.", ".o", 0, "a.o"},
        {"a", "/.o/", 2, "a/.o/"},
        {"", ".o", 0, ".o"},
    };
    for (const auto &row : rows) {
        EXPECT_STREQ(dospath(&output, row.path, row.extension, 1, row.mode),
                     row.result)
            << row.path << " mode " << row.mode;
    }
}

TEST_F(dospath_, dospath_takes_a_dot_in_a_folder) {
    EXPECT_STREQ(dospath(&output, "/a.b/file", ".o", 1, 0), "/a.o");
    EXPECT_STREQ(dospath(&output, "../file", ".o", 1, 1), "..o");
}

TEST_F(dospath_, appends_without_reset) {
    dystr(&output, "before ");
    EXPECT_EQ(dospath(&output, "//D/x", nullptr, 0, 0), output.buffer);
    EXPECT_STREQ(output.buffer, "before d:/x");
    EXPECT_STREQ(dospath(&output, "y", nullptr, 1, 0), "y");
}

TEST_F(dospath_, the_dot_of_a_mapped_root_is_not_looked_at) {
    support::write_file("maps", "D> /dot v:/x.y\n");
    load_mappings("maps", 1);
    EXPECT_STREQ(dospath(&output, "/dot/file", ".o", 1, 0), "v:/x.y/file.o");
}

TEST_F(dospath_, paths_of_any_length) {
    std::string path, expected;
    for (int i = 0; i < 50000; ++i) {
        path += "/abc";
        expected += "\\\\abc";
    }
    EXPECT_STREQ(dospath(&output, path.c_str(), nullptr, 1, 2),
                 expected.c_str());
}

TEST_F(mkfmap_, gives_the_rest) {
    const struct {
        const char *path;
        const char *root;
        const char *rest;
    } rows[] = {
        {"//D/src", "d:", "/src"},
        {"//D", "d:", ""},
        {"/u/x", "w:\\users", "/x"},
        {"/u", "w:\\users", ""},
        {"/usr", "", "/usr"},
        {"u/x", "", "u/x"},
        {"", "", ""},
    };
    for (const auto &row : rows) {
        dytruncate(&output, 0);
        EXPECT_STREQ(mkfmap(&output, 1, row.path), row.rest) << row.path;
        EXPECT_STREQ(output.buffer, row.root) << row.path;
    }
    dytruncate(&output, 0);
    EXPECT_STREQ(mkfmap(&output, 2, "/u/x"), "/x");
    EXPECT_STREQ(output.buffer, "w:\\\\users");
}

TEST_F(mkfmap_, a_relative_path_loads_no_maps) {
    EXPECT_EQ(remove("morva/data/roots.map"), 0);
    EXPECT_EQ(support::stderr_of([&] { mkfmap(&output, 0, "u/x"); }), "");
    EXPECT_EQ(support::stderr_of([&] { mkfmap(&output, 0, "//D/x"); }), "");
    EXPECT_NE(support::stderr_of([&] { mkfmap(&output, 0, "/u/x"); }), "");
}

TEST_F(putpart_, converts_a_part_or_the_whole) {
    const char text[] = "/a/b/c/";
    putpart(&output, 1, text, text + 4);
    EXPECT_STREQ(output.buffer, "\\a\\b");
    putpart(&output, 0, text + 4, nullptr);
    EXPECT_STREQ(output.buffer, "\\a\\b/c/");
    putpart(&output, 2, text, text);
    EXPECT_STREQ(output.buffer, "\\a\\b/c/");
    putpart(&output, 2, text + 5, nullptr);
    EXPECT_STREQ(output.buffer, "\\a\\b/c/c\\\\");
}

}  // namespace
