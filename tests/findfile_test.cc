// findfile_test.cc: path variables, search paths and files along them.
#include "support/child.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/findfile.h>

namespace {

const char default_path[] = "/bin:/usr/bin:/usr/X11R6/bin";

std::string value_of(const std::string &name, int use_defaults) {
    char buffer[101];
    buffer[100] = '!';
    const char *value = deflvar(name.c_str(), use_defaults, buffer);
    EXPECT_EQ(buffer[100], '!');
    return value != nullptr ? value : "(null)";
}

TEST(deflvar, deflvar_rows) {
    setenv("SET", "value", 1);
    setenv("EMPTY", "", 1);
    unsetenv("MORVA");
    unsetenv("PATH");
    const struct {
        const char *name;
        int use_defaults;
        const char *value;
    } rows[] = {
        {"SET", 0, "value"},
        {"SET", 1, "value"},
        {"EMPTY", 0, ""},
        {"EMPTY", 1, ""},
        {"FOO", 0, "(null)"},
        {"FOO", 1, "/usr/foo"},
        {"Foo_9z\xC4", 1, "/usr/foo_9z\xC4"},
        {"", 1, "/usr/"},
        {"MORVA", 0, "(null)"},
        {"MORVA", 1, "/usr/morva"},
        {"PATH", 0, "(null)"},
        {"PATH", 1, default_path},
        {"path", 1, "/usr/path"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(value_of(row.name, row.use_defaults), row.value)
            << row.name << " " << row.use_defaults;
    }
}

TEST(deflvar, the_environment_wins_over_the_built_in_values) {
    setenv("MORVA", "/opt/m", 1);
    setenv("PATH", "/mine", 1);
    EXPECT_EQ(value_of("MORVA", 1), "/opt/m");
    EXPECT_EQ(value_of("PATH", 1), "/mine");
}

TEST(deflvar, a_name_is_cut_to_what_fits_100_bytes) {
    EXPECT_EQ(value_of(std::string(94, 'A'), 1),
              "/usr/" + std::string(94, 'a'));
    EXPECT_EQ(value_of(std::string(95, 'A'), 1),
              "/usr/" + std::string(94, 'a'));
    EXPECT_EQ(value_of(std::string(5000, 'A'), 1),
              "/usr/" + std::string(94, 'a'));
}

TEST(deflmorva, the_environment_unless_the_default_is_forced) {
    setenv("MORVA", "/opt/m", 1);
    EXPECT_STREQ(deflmorva(0), "/opt/m");
    EXPECT_STREQ(deflmorva(1), "/usr/morva");
    setenv("MORVA", "", 1);
    EXPECT_STREQ(deflmorva(0), "");
    unsetenv("MORVA");
    EXPECT_STREQ(deflmorva(0), "/usr/morva");
}

TEST(default_morva_path, field_is_100_bytes_with_a_marker) {
    char expected[100] = "<<HERE>>/usr/morva";
    static_assert(sizeof default_morva_path == 100);
    EXPECT_EQ(memcmp(default_morva_path, expected, sizeof expected), 0);
}

TEST(default_morva_path, is_read_anew_at_each_use) {
    unsetenv("MORVA");
    EXPECT_STREQ(deflmorva(0), "/usr/morva");
    strcpy(default_morva_path + 8, "/patched");
    EXPECT_STREQ(deflmorva(0), "/patched");
    EXPECT_STREQ(deflmorva(1), "/patched");
    EXPECT_EQ(value_of("MORVA", 1), "/patched");
}

TEST(default_morva_path, a_full_field_ends_at_its_end) {
    memset(default_morva_path + 8, 'x', 92);
    EXPECT_EQ(deflmorva(1), std::string(91, 'x'));
}

// What an installer does: find the marker in a copy of a linked program, and
// overwrite the text behind it.
TEST(default_morva_path, can_be_patched_in_a_linked_program) {
    if (getenv("TOVAN_PATCHED") != nullptr) {
        unsetenv("MORVA");
        EXPECT_STREQ(deflmorva(0), "/opt/somewhere/else");
        return;
    }
    std::string program = support::read_file("/proc/self/exe");
    std::string marker("<<HERE>>/usr/morva\0", 19);
    size_t at = program.find(marker, 0);
    int patched = 0;
    for (; at != std::string::npos; at = program.find(marker, at + 1)) {
        program.replace(at + 8, 20, std::string("/opt/somewhere/else\0", 20));
        ++patched;
    }
    EXPECT_GE(patched, 1);
    support::write_file("patched", program);
    support::outcome end =
        support::run_program({"sh", "-c",
                              "chmod +x patched && TOVAN_PATCHED=1 ./patched "
                              "--gtest_filter='*can_be_patched*'"});
    EXPECT_EQ(end.exit_status, 0) << end.out << end.err;
}

std::string built(const std::string &path) {
    dy output;
    dynew(&output, 0);
    dystr(&output, "before");
    std::string result = buildpath(&output, path.c_str());
    EXPECT_EQ(output.length, static_cast<int>(result.size()));
    free(output.buffer);
    return result;
}

void set_path_variables() {
    unsetenv("MORVA");
    unsetenv("NOSUCH");
    setenv("ONE", "/one", 1);
    setenv("V", "p:q", 1);
    setenv("W", ";p;;q:", 1);
    setenv("EMPTY", "", 1);
    setenv("COLONS", ":;:", 1);
    setenv("NESTED", "%ONE:$ONE", 1);
}

TEST(buildpath, buildpath_rows) {
    set_path_variables();
    const struct {
        const char *path;
        const char *expanded;
    } rows[] = {
        {"a;;b:", "a:b"},
        {"a", "a"},
        {":;a/b;:c/;", "a/b:c/"},
        {" ", " "},
        {"%MORVA/lib", "/usr/morva/lib"},
        {"%MORVA", "/usr/morva"},
        {"$MORVA/lib:x", "x"},
        {"$NOSUCH/x;y", "y"},
        {"y:$NOSUCH/x", "y"},
        {"%NOSUCH/x", "/usr/nosuch/x"},
        {"%V/r", "p/r:q/r"},
        {"$V/r", "p/r:q/r"},
        {"$V", "p:q"},
        {"a:%V/r/s:b", "a:p/r/s:q/r/s:b"},
        {"$W/r", "p/r:q/r"},
        {"%EMPTY/x:y", "y"},
        {"$COLONS/x:y", "y"},
        {"$ONE:$ONE", "/one:/one"},
        {"$ONE/", "/one/"},
        {"a$ONE:b%ONE/c", "a$ONE:b%ONE/c"},
        {"$NESTED", "%ONE:$ONE"},
        {"%", "/usr/"},
        {"%/x", "/usr//x"},
        {"$:$/x:y", "y"},
        {"a\\b", "a\\b"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(built(row.path), row.expanded) << row.path;
}

TEST(buildpath, long_variables_and_values_are_whole) {
    std::string name(3000, 'N');
    std::string value(5000, 'v');
    setenv(name.c_str(), value.c_str(), 1);
    EXPECT_EQ(built("$" + name + "/x"), value + "/x");
    EXPECT_EQ(built("%" + std::string(200, 'Q') + "/x"),
              "/usr/" + std::string(94, 'q') + "/x");
}

TEST(buildpath, many_elements) {
    std::string path, expected;
    for (int i = 0; i < 20000; ++i) {
        path += ";;d" + std::to_string(i) + ":";
        expected += (i > 0 ? ":d" : "d") + std::to_string(i);
    }
    EXPECT_EQ(built(path), expected);
}

TEST(buildpath, works_on_a_zeroed_record) {
    dy output = {};
    EXPECT_STREQ(buildpath(&output, "a;b"), "a:b");
    free(output.buffer);
}

const std::string logic_error(
    "logic error - buildpath() called with NULL path\0", 48);

void build_nothing(const char *path) {
    dy output;
    dynew(&output, 0);
    buildpath(&output, path);
}

TEST(buildpath, buildpath_without_elements_is_a_logic_error) {
    set_path_variables();
    EXPECT_EQ(logic_error.size(), 48u);
    for (const char *path : {static_cast<const char *>(nullptr), "", ":",
                             ";;:", "$NOSUCH/x", "%EMPTY", "$COLONS/x"}) {
        EXPECT_FATAL(build_nothing(path), 255, logic_error);
    }
}

TEST(spread, appends_to_what_is_there) {
    set_path_variables();
    dy output;
    dynew(&output, 0);
    const char text[] = "V/r/s:rest";
    spread(text, text + 5, 0, &output);
    EXPECT_STREQ(output.buffer, "p/r/s:q/r/s");
    spread(text, text + 1, 1, &output);
    EXPECT_STREQ(output.buffer, "p/r/s:q/r/s:p:q");
    const char none[] = "NOSUCH/x";
    spread(none, none + 8, 0, &output);
    EXPECT_STREQ(output.buffer, "p/r/s:q/r/s:p:q");
    spread(none, none + 8, 1, &output);
    EXPECT_STREQ(output.buffer, "p/r/s:q/r/s:p:q:/usr/nosuch/x");
    free(output.buffer);
}

std::string found(const char *file, const char *path, int mode) {
    char *name = findfile(file, path, mode);
    if (name == nullptr) return "(null)";
    std::string result = name;
    free(name);
    return result;
}

TEST(findfile, findfile_rows) {
    support::write_file("a/one", "");
    support::write_file("b/one", "");
    support::write_file("b/two", "");
    support::make_folders("b/folder");
    setenv("AB", "a:b", 1);
    const struct {
        const char *file;
        const char *path;
        int mode;
        const char *result;
    } rows[] = {
        // the first that exists
        {"one", "a:b", 0, "a/one"},
        {"two", "a:b", 0, "b/two"},
        {"two", "a/:b/", 0, "b/two"},
        {"one", "b;a", 1, "b/one"},
        {"folder", "a:b", 2, "b/folder"},
        {"folder/../one", "$AB", 0, "b/folder/../one"},
        {"../one", "$AB/x:%AB/folder", 0, "b/folder/../one"},
        // nothing found
        {"none", "a:b", 0, "(null)"},
        {"none", "a:b", 1, "a/none"},
        {"none", "a:b", 2, "b/none"},
        {"none", "a/:b/", 2, "b/none"},
        {"none", "a:b", -2, "b/none"},
        // without looking
        {"two", "a:b", -1, "a/two"},
        {"none", "a:b", -1, "a/none"},
        // no file: the directories themselves
        {nullptr, "none:b:a", 0, "b"},
        {"", "none:b/:a", 0, "b/"},
        {nullptr, "none:nor", 0, "(null)"},
        {nullptr, "none:nor", 2, "nor"},
        {nullptr, "none:nor", 1, "none/"},
        {"", "a:b", -1, "a/"},
        // a file that begins with "/" is taken below the directory too
        {"/two", "b", 0, "b//two"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(found(row.file, row.path, row.mode), row.result)
            << (row.file != nullptr ? row.file : "null") << " along "
            << row.path << " mode " << row.mode;
    }
}

TEST(findfile, findfile_fallback_always_adds_a_slash) {
    EXPECT_EQ(found("none", "a/:b", 1), "a//none");
    EXPECT_EQ(found("none", "/", -1), "//none");
    EXPECT_EQ(found("none-such-file", "/", 2), "/none-such-file");
}

TEST(findfile, finds_what_is_not_readable) {
    support::write_file("a/closed", "");
    ASSERT_EQ(system("chmod 000 a/closed"), 0);
    EXPECT_EQ(found("closed", "a", 0), "a/closed");
}

TEST(findfile, long_directories_and_files) {
    std::string folder(4000, 'd');
    std::string file(4000, 'f');
    EXPECT_EQ(found(file.c_str(), (folder + ":x").c_str(), 1),
              folder + "/" + file);
}

TEST(findfile, a_path_without_elements_is_a_logic_error) {
    EXPECT_FATAL(findfile("x", nullptr, 0), 255, logic_error);
    EXPECT_FATAL(findfile("x", "::", -1), 255, logic_error);
}

}  // namespace
