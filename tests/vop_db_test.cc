// vop_db_test.cc: keyed databases on the command line.
#include "support/child.h"
#include "support/database.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <random>
#include <string>
#include <vector>

namespace {

using support::page_of;
using support::raw_page;
using support::write_file;
using words = std::vector<std::string>;

const std::string program = TOVAN_BINARY_DIR "/bin/vop";

const std::string usage =
    "\nUsage: vop db ACTION NAME [ARGUMENT...]\n"
    "Use -x flag for explanations\n";

support::outcome db(words arguments, const std::string &input = "") {
    arguments.insert(arguments.begin(), {program, "db"});
    return support::run_program(arguments, input);
}

struct row {
    words arguments;
    std::string input;
    std::string out;
    std::string err;
    int status;
};

// No signal ended it, and no sanitizer.
void expect_orderly_end(const words &arguments) {
    support::outcome end = db(arguments);
    std::string command;
    for (const std::string &word : arguments)
        command += word + " ";
    EXPECT_EQ(end.signal, 0) << command;
    for (const char *report : {"Sanitizer", "runtime error"})
        EXPECT_EQ(end.err.find(report), std::string::npos)
            << command << end.err;
}

void check(const std::vector<row> &rows) {
    for (const row &expected : rows) {
        support::outcome end = db(expected.arguments, expected.input);
        std::string command;
        for (const std::string &word : expected.arguments)
            command += word + " ";
        EXPECT_EQ(end.out, expected.out) << command;
        EXPECT_EQ(end.err, expected.err) << command;
        EXPECT_EQ(end.exit_status, expected.status) << command;
    }
}

std::string stored(const std::string &text) {
    return text + '\0';
}

std::string record(const std::vector<uint32_t> &offsets) {
    std::string bytes;
    for (uint32_t offset : offsets) {
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes += static_cast<char>(offset >> shift);
    }
    return bytes;
}

TEST(vop_db, keeps_texts) {
    check({
        {{"create", "k"}, "", "", "", 0},
        {{"add", "k", "CC", "gcc"}, "", "", "", 0},
        {{"add", "k", "LD", "ld"}, "", "", "", 0},
        {{"get", "k", "CC", "LD"}, "", "gcc\nld\n", "", 0},
        {{"add", "k", "CC", "clang"}, "", "", "", 0},
        {{"get", "k", "CC"}, "", "clang\n", "", 0},
        {{"list", "k"}, "", "LD\tld\nCC\tclang\n", "", 0},
        {{"del", "k", "CC"}, "", "", "", 0},
        {{"get", "k", "CC", "LD"}, "", "ld\n", "vop: k: CC: not found\n", 1},
        {{"del", "k", "CC"}, "", "", "vop: k: CC: not found\n", 1},
    });
    EXPECT_EQ(support::read_file("k.dir"), "\4");
}

TEST(vop_db, joins_texts) {
    check({
        {{"create", "k"}, "", "", "", 0},
        {{"add", "-s", ":", "k", "PATH", "/bin", "/usr/bin"}, "", "", "", 0},
        {{"add", "-s:", "k", "PATH", "/x"}, "", "", "", 0},
        {{"get", "k", "PATH"}, "", "/bin:/usr/bin:/x\n", "", 0},
        {{"add", "-s,", "k", "PATH", std::string(1003, 'x'), "y"},
         "",
         "",
         "PATH: too many entries\n",
         1},
        {{"get", "k", "PATH"}, "", "/bin:/usr/bin:/x,y\n", "", 0},
    });
}

TEST(vop_db, keeps_lines) {
    check({
        {{"create", "-l", "x"}, "", "", "", 0},
        {{"add", "x", "main", "main.c:10", "main.c:20"}, "", "", "", 0},
        {{"add", "x", "use", "use.c:1"}, "", "", "", 0},
        {{"add", "x", "main", std::string(600, 'l')}, "", "", "", 0},
        {{"lines", "x", "use", "main", "none"},
         "",
         "use.c:1\nmain.c:10\nmain.c:20\n" + std::string(511, 'l') + "\n",
         "vop: x: none: not found\n",
         1},
        {{"del", "x", "main"}, "", "", "", 0},
        {{"list", "x"}, "", "use\tuse.c:1\n", "", 0},
        {{"del", "x", "main"}, "", "", "vop: x: main: not found\n", 1},
    });
    EXPECT_EQ(support::read_file("x.dir"), "\1");
    EXPECT_EQ(support::read_file("x.data").substr(0, 28),
              "main.c:10\nmain.c:20\nuse.c:1\n");
}

TEST(vop_db, reads_what_it_lists) {
    std::string pairs;
    for (int i = 0; i < 2000; ++i)
        pairs += "key" + std::to_string(i) + "\ttext\\ of " +
                 std::to_string(i) + "\n";
    for (const words &create :
         {words{"create", "one"}, {"create", "-l", "one"}}) {
        words other = create;
        other.back() = "two";
        words again = create;
        again.insert(again.begin() + 1, "-f");
        EXPECT_EQ(db(again).exit_status, 0);
        EXPECT_EQ(db({"add", "one"}, pairs).err, "");
        std::string list = db({"list", "one"}).out;
        EXPECT_EQ(list.size(), pairs.size());
        other.insert(other.begin() + 1, "-f");
        EXPECT_EQ(db(other).exit_status, 0);
        EXPECT_EQ(db({"add", "two"}, list).err, "");
        EXPECT_EQ(db({"check", "two"}).exit_status, 0);
        std::string found = db({"get", "two", "key1999"}).out +
                            db({"lines", "two", "key1999"}).out;
        EXPECT_EQ(found, "text\\ of 1999\n");
    }
}

TEST(vop_db, lists_control_characters_in_printable_form) {
    check({{{"create", "k"}, "", "", "", 0},
           {{"add", "k", "a\tb", "x\n\x7f\xc3\xa4\\"}, "", "", "", 0},
           {{"list", "k"}, "", "a\\tb\tx\\n\\177\xc3\xa4\\\n", "", 0},
           {{"get", "k", "a\tb"}, "", "x\n\x7f\xc3\xa4\\\n", "", 0}});
}

TEST(vop_db, shows_sizes_and_numbers) {
    check({{{"create", "k"}, "", "", "", 0},
           {{"stat", "k"},
            "",
            "kind                texts\n"
            "page size           4096\n"
            "pages with pairs    0\n"
            "page file bytes     0\n"
            "directory bytes     1\n"
            "splits              0\n"
            "depth               0\n"
            "pairs               0\n"
            "key bytes           0\n"
            "value bytes         0\n",
            "",
            0},
           {{"create", "-l", "x"}, "", "", "", 0}});
    std::string pairs;
    for (int i = 0; i < 200; ++i)
        pairs += "key" + std::to_string(100 + i % 100) + "\tline\n";
    check({{{"add", "x"}, pairs, "", "", 0},
           {{"stat", "x"},
            "",
            "kind                line index\n"
            "page size           1024\n"
            "pages with pairs    2\n"
            "page file bytes     2048\n"
            "directory bytes     4096\n"
            "splits              1\n"
            "depth               1\n"
            "pairs               100\n"
            "key bytes           700\n"
            "value bytes         800\n"
            "filled percent      92\n"
            "lines               200\n"
            "data bytes          1000\n",
            "",
            0}});
}

TEST(vop_db, refuses_what_is_misused) {
    check({
        {{}, "", "", "no action given" + usage, 255},
        {{"frob"}, "", "", "frob: unknown action" + usage, 255},
        {{"create"}, "", "", "no name given" + usage, 255},
        {{"create", "a", "b"}, "", "", "b: one name too many" + usage, 255},
        {{"create", "-q", "a"}, "", "", "-q: invalid flag" + usage, 255},
        {{"add"}, "", "", "add: no name given" + usage, 255},
        {{"add", "k", "a"}, "", "", "add: no text given" + usage, 255},
        {{"add", "-s", "ab", "k"},
         "",
         "",
         "-s ab: not one character" + usage,
         255},
        {{"add", "-s", "", "k"}, "", "", "-s : not one character" + usage, 255},
        {{"get", "k"}, "", "", "arguments are missing" + usage, 255},
        {{"lines", "k"}, "", "", "arguments are missing" + usage, 255},
        {{"del", "k"}, "", "", "arguments are missing" + usage, 255},
        {{"list"}, "", "", "arguments are missing" + usage, 255},
        {{"stat", "a", "b"}, "", "", "b: one name too many" + usage, 255},
        {{"check"}, "", "", "no name given" + usage, 255},
    });
}

TEST(vop_db, a_database_that_is_not_there_is_named) {
    const std::string none =
        "vop: none: no such database (vop db create makes one)\n";
    check({
        {{"add", "none", "a", "x"}, "", "", none, 255},
        {{"get", "none", "a"}, "", "", none, 255},
        {{"lines", "none", "a"}, "", "", none, 255},
        {{"del", "none", "a"}, "", "", none, 255},
        {{"list", "none"},
         "",
         "",
         "vop: none.dir: No such file or directory\n",
         255},
        {{"check", "none"},
         "",
         "",
         "vop: none.dir: No such file or directory\n",
         255},
        {{"create", "no/k"},
         "",
         "",
         "vop: no/k: Cannot create new '.dir' file: No such file or "
         "directory\n",
         255},
    });
    EXPECT_FALSE(support::file_exists("none.dir"));
}

TEST(vop_db, a_database_that_is_there_is_replaced_on_demand) {
    check({
        {{"create", "-l", "k"}, "", "", "", 0},
        {{"add", "k", "a", "x"}, "", "", "", 0},
        {{"create", "k"},
         "",
         "",
         "vop: k.dir: already there (-f makes the database anew)\n",
         255},
        {{"lines", "k", "a"}, "", "x\n", "", 0},
        {{"create", "-f", "k"}, "", "", "", 0},
        {{"list", "k"}, "", "", "", 0},
        {{"get", "k", "a"}, "", "", "vop: k: a: not found\n", 1},
    });
    EXPECT_FALSE(support::file_exists("k.data"));
    ASSERT_EQ(mkdir("folder.data", 0700), 0);
    check({{{"create", "-f", "folder"},
            "",
            "",
            "vop: folder.data: Is a directory\n",
            255}});
    EXPECT_FALSE(support::file_exists("folder.dir"));
    write_file("stray.data", "");
    check({{{"create", "stray"},
            "",
            "",
            "vop: stray.data: already there (-f makes the database anew)\n",
            255}});
}

TEST(vop_db, kinds_are_not_mixed_up) {
    check({
        {{"create", "k"}, "", "", "", 0},
        {{"create", "-l", "x"}, "", "", "", 0},
        {{"lines", "k", "a"},
         "",
         "",
         "vop: k: no line index (vop db get)\n",
         255},
        {{"get", "x", "a"},
         "",
         "",
         "vop: x: a line index has no texts (vop db lines)\n",
         255},
        {{"add", "-s:", "x", "a", "b"},
         "",
         "",
         "add: -s goes with texts, and x is a line index" + usage,
         255},
        {{"add", "k", "a", "b", "c"},
         "",
         "",
         "add: a key has one text (-s adds several)" + usage,
         255},
    });
}

TEST(vop_db, what_cannot_be_added_is_named) {
    check({
        {{"create", "k"}, "", "", "", 0},
        {{"add", "k", "a", std::string(5000, 'x')},
         "",
         "",
         "vop: k: a: too large for a page\n",
         255},
        {{"add", "k"},
         "a\tx\nb\n",
         "",
         "vop: standard input:2: no tab behind the key\n",
         255},
        {{"get", "k", "a"}, "", "x\n", "", 0},
    });
}

// ---- what is wrong with files ------------------------------------------

// Files, what check says about them, and the faults it counts.
struct damage {
    std::string dir;
    std::string pag;
    std::string out;
    std::string data = "";  // "" for texts
};

void expect_faults(const std::vector<damage> &rows) {
    for (const damage &row : rows) {
        write_file("k.dir", row.dir);
        write_file("k.pag", row.pag);
        unlink("k.data");
        if (!row.data.empty()) write_file("k.data", row.data);
        support::outcome end = db({"check", "k"});
        EXPECT_EQ(end.out, row.out);
        EXPECT_EQ(end.err, "");
        bool is_sound = row.out.find("faults 0\n") != std::string::npos;
        EXPECT_EQ(end.exit_status, is_sound ? 0 : 1) << row.out;
        for (const words &action : {words{"list", "k"},
                                    {"stat", "k"},
                                    {"get", "k", "a"},
                                    {"lines", "k", "a"},
                                    {"add", "k", "new", "x"},
                                    {"del", "k", "a"}})
            expect_orderly_end(action);
    }
}

// A directory with these bits.
std::string directory(const std::vector<int> &bits, char page_kb = 1) {
    std::string bytes(4096, '\0');
    bytes[0] = page_kb;
    for (int bit : bits)
        bytes[static_cast<size_t>(bit / 8 + 1)] |=
            static_cast<char>(1 << bit % 8);
    return bytes;
}

// Keys whose hash has these lowest bits.
std::string key_with(uint32_t low, uint32_t mask) {
    for (int i = 0;; ++i) {
        std::string key = stored("k" + std::to_string(i));
        uint32_t hash = dbm_hash(key.data(), static_cast<int>(key.size()));
        if ((hash & mask) == low) return key;
    }
}

TEST(vop_db, check_finds_nothing_in_sound_files) {
    expect_faults({
        {"\4", "", "k: pages 0, pairs 0, faults 0\n"},
        {"\1", page_of({{stored("a"), stored("x")}}),
         "k: pages 1, pairs 1, faults 0\n"},
        {directory({0}),
         page_of({{key_with(0, 1), stored("x")}}) +
             page_of({{key_with(1, 1), stored("x")}}),
         "k: pages 2, pairs 2, faults 0\n"},
        {"\1", page_of({{stored("a"), record({0, 4})}}),
         "k: pages 1, pairs 1, faults 0\n", "one\ntwo\n"},
    });
}

TEST(vop_db, check_looks_at_the_directory) {
    expect_faults({
        {"", "", "k.dir: empty: no page size\nk: pages 0, pairs 0, faults 1\n"},
        {std::string(1, '\0'), "",
         "k.dir: page size 0\nk: pages 0, pairs 0, faults 1\n"},
        {std::string("\1\0", 2), "",
         "k.dir: 2 bytes, neither 1 nor a multiple of 4096\n"
         "k: pages 0, pairs 0, faults 1\n"},
        {directory({0}), page_of({}),
         "k.dir: bit 0 is set, and page 1 is behind the end of k.pag\n"
         "k: pages 1, pairs 0, faults 1\n"},
        {directory({2}), page_of({}),
         "k.dir: bit 2 is set, and bit 0 above it is not\n"
         "k: pages 1, pairs 0, faults 1\n"},
        {directory({0, 2}), page_of({}) + page_of({}),
         "k.dir: bit 2 is set, and page 3 is behind the end of k.pag\n"
         "k: pages 2, pairs 0, faults 1\n"},
        {directory({0, 1, 4}), std::string(4096, '\0'),
         "k.dir: bit 4 is set, and page 6 is behind the end of k.pag\n"
         "k: pages 4, pairs 0, faults 1\n"},
    });
}

TEST(vop_db, check_looks_at_the_form_of_pages) {
    std::string cut = page_of({{stored("a"), stored("x")}}).substr(0, 100);
    expect_faults({
        {"\1", cut,
         "k.pag: page 0: cut off after 100 of 1024 bytes\n"
         "k.pag: page 0: pair 1 `': its key is not ended by its only NUL\n"
         "k.pag: page 0: pair 1 `': its text is not ended by its only NUL\n"
         "k: pages 1, pairs 1, faults 3\n"},
        {"\1", raw_page({3, 1, 2, 3}),
         "k.pag: page 0: 3 offsets, which is odd\n"
         "k: pages 0, pairs 0, faults 1\n"},
        {"\1", raw_page({512}),
         "k.pag: page 0: 512 offsets, too many for it\n"
         "k: pages 0, pairs 0, faults 1\n"},
        {"\1", raw_page({65534}),
         "k.pag: page 0: 65534 offsets, too many for it\n"
         "k: pages 0, pairs 0, faults 1\n"},
        {"\1", raw_page({2, 1025, 1000}),
         "k.pag: page 0: pair 1: the key starts at 1025, above 1024\n"
         "k: pages 0, pairs 0, faults 1\n"},
        {"\1", raw_page({4, 1000, 900, 800, 801}),
         "k.pag: page 0: pair 2: the value starts at 801, above 800\n"
         "k: pages 0, pairs 0, faults 1\n"},
        {"\1", raw_page({2, 10, 5}),
         "k.pag: page 0: the items reach down to 5, into the offsets\n"
         "k: pages 0, pairs 0, faults 1\n"},
        {"\1", page_of({}) + raw_page({1}) + page_of({}),
         "k.pag: page 1: 1 offsets, which is odd\n"
         "k: pages 2, pairs 0, faults 1\n"},
    });
}

TEST(vop_db, check_looks_at_keys_and_texts) {
    const std::string shown(40, 'l');
    std::string long_key = stored(std::string(60, 'l'));
    expect_faults({
        {"\1", page_of({{"", stored("x")}}),
         "k.pag: page 0: pair 1 `': its key is empty\n"
         "k: pages 1, pairs 1, faults 1\n"},
        {"\1", page_of({{"a", stored("x")}, {stored(stored("b")), stored("")}}),
         "k.pag: page 0: pair 1 `a': its key is not ended by its only NUL\n"
         "k.pag: page 0: pair 2 `b': its key is not ended by its only NUL\n"
         "k: pages 1, pairs 2, faults 2\n"},
        {"\1", page_of({{stored("a\n"), "x"}, {long_key, ""}}),
         "k.pag: page 0: pair 1 `a\\n': its text is not ended by its only "
         "NUL\n"
         "k.pag: page 0: pair 2 `" +
             shown +
             "...': its text is not ended by its only NUL\n"
             "k: pages 1, pairs 2, faults 2\n"},
        {"\1",
         page_of({{stored("a"), stored("x")},
                  {stored("b"), stored("x")},
                  {stored("a"), stored("y")}}),
         "k.pag: page 0: pair 3 `a': its key is that of pair 1\n"
         "k: pages 1, pairs 3, faults 1\n"},
    });
}

TEST(vop_db, check_tells_where_a_key_belongs) {
    std::string even = key_with(0, 1);
    std::string odd = key_with(1, 1);
    std::string name(odd.c_str());
    expect_faults({
        {directory({0}),
         page_of({{odd, stored("x")}}) + page_of({{odd, stored("y")}}),
         "k.pag: page 0: pair 1 `" + name +
             "': it belongs on page 1\nk: pages 2, pairs 2, faults 1\n"},
        {"\1", page_of({}) + page_of({{odd, stored("y")}}),
         "k.pag: page 1: pair 1 `" + name +
             "': it belongs on page 0\nk: pages 2, pairs 1, faults 1\n"},
    });
}

TEST(vop_db, check_looks_at_lines) {
    expect_faults({
        {"\1",
         page_of({{stored("a"), record({0, 1, 8, 0x80000000}) + "xyz"},
                  {stored("b"), ""}}),
         "k.pag: page 0: pair 1 `a': 19 bytes of offsets, not a multiple of "
         "4\n"
         "k.pag: page 0: pair 1 `a': line 2, offset 1, is no start of a line "
         "in k.data\n"
         "k.pag: page 0: pair 1 `a': line 3, offset 8, is behind the end of "
         "k.data\n"
         "k.pag: page 0: pair 1 `a': line 4, offset 2147483648, is behind the "
         "end of k.data\n"
         "k: pages 1, pairs 2, faults 4\n",
         "one\ntwo\n"},
    });
}

TEST(vop_db, lines_with_nuls_end_there) {
    write_file("k.dir", "\1");
    write_file("k.pag", page_of({{stored("a"), record({0, 4})}}));
    write_file("k.data", std::string("\0ab\nc\0d\n", 8));
    check({{{"lines", "k", "a"}, "", "\nc\n", "", 0},
           {{"list", "k"}, "", "a\t\na\tc\n", "", 0}});
}

TEST(vop_db, check_takes_any_bytes_on_demand) {
    write_file("k.dir", "\1");
    write_file("k.pag", page_of({{"a", "x"}, {stored("b"), ""}}));
    check(
        {{{"check", "-b", "k"}, "", "k: pages 1, pairs 2, faults 0\n", "", 0}});
}

TEST(vop_db, check_stops_after_100_faults) {
    write_file("k.dir", directory({}));
    std::string pages;
    for (int i = 0; i < 300; ++i)
        pages += raw_page({1});
    write_file("k.pag", pages);
    support::outcome end = db({"check", "k"});
    EXPECT_EQ(end.exit_status, 1);
    const std::string last =
        "k.pag: page 99: 1 offsets, which is odd\n"
        "k: the rest is not looked at\nk: pages 0, pairs 0, faults 100\n";
    ASSERT_GT(end.out.size(), last.size());
    EXPECT_EQ(end.out.substr(end.out.size() - last.size()), last);
}

TEST(vop_db, damaged_pages_are_passed_over_and_named) {
    write_file("k.dir", directory({0}));
    write_file("k.pag", raw_page({1}) + page_of({{key_with(1, 1), "x"}}));
    std::string key = key_with(1, 1).c_str();
    std::string lost = key_with(0, 1).c_str();
    const std::string damaged = "vop: k.pag: page 0: 1 offsets, which is odd\n";
    check({
        {{"list", "k"}, "", key + "\tx\n", damaged, 1},
        {{"get", "k", key, lost},
         "",
         "x\n",
         "vop: k: " + lost + ": a page is damaged (vop db check says more)\n",
         255},
        {{"add", "k", lost, "x"},
         "",
         "",
         "vop: k: " + lost + ": Input/output error\n",
         255},
    });
    EXPECT_EQ(db({"stat", "k"}).err, damaged);
    write_file("e.dir", "");
    write_file("e.pag", "");
    check({{{"list", "e"},
            "",
            "",
            "vop: e.dir: no page size (vop db check says more)\n",
            255},
           {{"get", "e", "a"},
            "",
            "",
            "vop: e: dbminit failed: Invalid argument\n",
            255}});
}

// What a process leaves that dies before it writes the old half of a page.
TEST(vop_db, copies_of_moved_pairs_are_not_listed) {
    std::string even = key_with(0, 1);
    std::string odd = key_with(1, 1);
    write_file("k.dir", directory({0}));
    write_file("k.pag", page_of({{even, stored("x")}, {odd, stored("y")}}) +
                            page_of({{odd, stored("y")}}));
    std::string name = odd.c_str();
    check({{{"list", "k"},
            "",
            std::string(even.c_str()) + "\tx\n" + name + "\ty\n",
            "",
            0},
           {{"check", "k"},
            "",
            "k.pag: page 0: pair 2 `" + name +
                "': it belongs on page 1\nk: pages 2, pairs 3, faults 1\n",
            "",
            1}});
}

TEST(vop_db, holes_cost_nothing) {
    write_file("k.dir", directory({0}));
    write_file("k.pag", page_of({}));
    ASSERT_EQ(truncate("k.pag", off_t{1} << 41), 0);
    ASSERT_EQ(truncate("k.dir", 256 << 20), 0);
    support::outcome end = db({"check", "k"});
    EXPECT_EQ(end.out, "k: pages 4, pairs 0, faults 0\n");
    EXPECT_EQ(db({"stat", "k"}).exit_status, 0);
    EXPECT_EQ(db({"list", "k"}).exit_status, 0);
}

TEST(vop_db, other_files_than_regular_ones_are_refused) {
    ASSERT_EQ(mkfifo("f.dir", 0600), 0);
    ASSERT_EQ(mkdir("d.dir", 0700), 0);
    write_file("l.dir", "\1");
    write_file("l.pag", "");
    ASSERT_EQ(mkfifo("l.data", 0600), 0);
    check({{{"check", "f"}, "", "", "vop: f.dir: not a regular file\n", 255},
           {{"check", "l"}, "", "", "vop: l.data: not a regular file\n", 255},
           {{"stat", "d"}, "", "", "vop: d.dir: not a regular file\n", 255}});
}

// Bytes of sound files change at random; no action ends by a signal.
TEST(vop_db, no_damage_ends_in_a_signal) {
    EXPECT_EQ(db({"create", "-l", "k"}).exit_status, 0);
    std::string pairs;
    for (int i = 0; i < 300; ++i)
        pairs += "key" + std::to_string(i % 90) + "\tline\n";
    EXPECT_EQ(db({"add", "k"}, pairs).exit_status, 0);
    std::string dir = support::read_file("k.dir");
    std::string pag = support::read_file("k.pag");
    std::mt19937 random(4711);
    for (int round = 0; round < 60; ++round) {
        std::string bad_dir = dir;
        std::string bad_pag = pag;
        if (round % 3 == 0)
            bad_dir[random() % 20] = static_cast<char>(random());
        for (int i = 0; i < 5; ++i) {
            size_t page = random() % (pag.size() / 1024);
            size_t place = page * 1024 + random() % 200;
            bad_pag[place] = static_cast<char>(random());
        }
        write_file("k.dir", bad_dir);
        write_file("k.pag", bad_pag);
        for (const words &action : {words{"check", "k"},
                                    {"list", "k"},
                                    {"stat", "k"},
                                    {"lines", "k", "key1", "key50"},
                                    {"del", "k", "key2", "key3"}}) {
            expect_orderly_end(action);
        }
    }
}

}  // namespace
