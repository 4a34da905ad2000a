// vop_ar_test.cc: members of archives on the command line.
#include "support/ar_image.h"
#include "support/child.h"
#include "support/program.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

const std::string program = TOVAN_BINARY_DIR "/bin/vop";
const std::string synopsis =
    "Usage: vop ar {list [-l] ARCHIVE... | get ARCHIVE MEMBER...}\n"
    "Use -x flag for explanations\n";

struct row {
    std::vector<std::string> words;
    std::string out;
    std::string err;
    int status;
};

void check(const std::vector<row> &rows) {
    for (const row &each : rows) {
        std::vector<std::string> words = {program, "ar"};
        words.insert(words.end(), each.words.begin(), each.words.end());
        support::check_run(words, "", {each.out, each.err, each.status});
    }
}

const std::string all_bytes = [] {
    std::string bytes;
    for (int i = 0; i < 256; i++)
        bytes += static_cast<char>(i);
    return bytes;
}();

void write_archives() {
    support::write_file(
        "x.a", support::ar_archive({{"a.o", "first"},
                                    {"a-name-of-20-letters", all_bytes},
                                    {"a.o", "second"}}));
    support::write_file("y.a", support::ar_archive({{"b", "other"}}));
    support::write_file("empty.a", support::ar_magic);
}

TEST(vop_ar, lists_names) {
    write_archives();
    check({
        {{"list", "x.a"}, "a.o\na-name-of-20-letters\na.o\n", "", 0},
        {{"list", "x.a", "y.a", "empty.a"},
         "x.a:a.o\nx.a:a-name-of-20-letters\nx.a:a.o\ny.a:b\n",
         "",
         0},
        {{"list", "empty.a"}, "", "", 0},
    });
}

TEST(vop_ar, lists_details) {
    support::write_file(
        "x.a", support::ar_magic +
                   support::ar_header{"a.o/", "5", "951868799"}.bytes() +
                   "12345\n" + support::ar_header{"b.o/", "0", "-1"}.bytes());
    const std::string a = "         5  2000-02-29 23:59:59          68  ";
    const std::string b = "         0  1969-12-31 23:59:59         134  ";
    check({
        {{"list", "-l", "x.a"}, a + "a.o\n" + b + "b.o\n", "", 0},
        {{"-l", "list", "x.a", "x.a"},
         a + "x.a:a.o\n" + b + "x.a:b.o\n" + a + "x.a:a.o\n" + b + "x.a:b.o\n",
         "",
         0},
    });
}

TEST(vop_ar, writes_data) {
    write_archives();
    check({
        {{"get", "x.a", "a.o"}, "first", "", 0},
        {{"get", "x.a", "a-name-of-20-letters", "a.o"},
         all_bytes + "first",
         "",
         0},
        {{"get", "x.a", "none", "a.o"},
         "first",
         "vop: x.a: none: no such member\n",
         1},
    });
}

TEST(vop_ar, says_what_is_wrong_with_an_archive) {
    write_archives();
    support::write_file("text", "some text");
    support::write_file("cut.a", support::read_file("y.a").substr(0, 70));
    check({
        {{"list", "y.a", "text"},
         "y.a:b\n",
         "vop: text: does not contain ar(1) magic\n",
         255},
        {{"get", "none.a", "b"},
         "",
         "vop: none.a: No such file or directory\n",
         255},
        {{"list", "cut.a"},
         "",
         "vop: malformed archive -- could not read entry header at 68\n",
         255},
    });
}

TEST(vop_ar, misuse) {
    check({
        {{}, "", "arguments are missing\n" + synopsis, 255},
        {{"list"}, "", "arguments are missing\n" + synopsis, 255},
        {{"get"}, "", "arguments are missing\n" + synopsis, 255},
        {{"get", "x.a"}, "", "arguments are missing\n" + synopsis, 255},
        {{"put", "x.a"}, "", "put: neither list nor get\n" + synopsis, 255},
        {{"get", "-l", "x.a", "a"},
         "",
         "-l does not go with get\n" + synopsis,
         255},
        {{"-q"}, "", "-q: invalid flag\n" + synopsis, 255},
    });
}

TEST(vop_ar, a_full_disk_is_noticed) {
    support::write_file(
        "x.a", support::ar_archive(
                   {{"large", std::string(1 << 20, 'x')}, {"small", "x"}}));
    for (const char *words :
         {" ar list x.a", " ar get x.a small", " ar get x.a large"}) {
        support::outcome end =
            support::run_program({"sh", "-c", program + words + " >/dev/full"});
        EXPECT_EQ(end.err, "vop: standard output: No space left on device\n");
        EXPECT_EQ(end.exit_status, 255);
    }
}

}  // namespace
