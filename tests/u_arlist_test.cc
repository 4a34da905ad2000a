// u_arlist_test.cc: the members of ar archives.
#include "support/ar_image.h"
#include "support/ar_listing.h"
#include "support/child.h"
#include "support/picture.h"
#include "support/tree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <tovan/u_arlist.h>
#include <unistd.h>
#include <string>
#include <vector>

namespace {

using support::ar_header;
using support::ar_magic;
using support::ar_member;

// The members of an archive with these bytes.
armember *list_of(const std::string &bytes, int *descriptor = nullptr) {
    support::write_file("x.a", bytes);
    return getarlist("x.a", descriptor);
}

// Their names, with a bar behind each.
std::string names_of(const armember *list) {
    EXPECT_EQ(support::flaw_of(list), "");
    std::string names;
    for (; list != nullptr; list = list->next)
        names += std::string(list->name) + "|";
    return names;
}

std::string names_in(const std::string &members) {
    return names_of(list_of(ar_magic + members));
}

TEST(u_arlist, an_archive_of_only_the_magic_has_no_members) {
    EXPECT_EQ(list_of(ar_magic), nullptr);
}

TEST(u_arlist, members_have_name_time_position_and_size) {
    ar_header a{"a.o/", "4", "1234567890"};
    ar_header b{"b.o/", "3", "12"};
    EXPECT_EQ(
        support::lines_of(list_of(ar_magic + a.bytes() + "data" + b.bytes() +
                                  "odd\n" + ar_member("c/", ""))),
        "a.o 1234567890 68 4\n"
        "b.o 12 132 3\n"
        "c 0 196 0\n");
}

TEST(u_arlist, the_byte_behind_odd_data_is_skipped) {
    EXPECT_EQ(names_in(ar_member("a/", "1") + ar_member("b/", "")), "a|b|");
    EXPECT_EQ(names_in(ar_member("a/", "12") + ar_member("b/", "")), "a|b|");
    // It may be missing at the end.
    EXPECT_EQ(names_in(ar_header{"a/", "1"}.bytes() + "1"), "a|");
}

TEST(u_arlist, names_end_at_their_padding_and_one_slash) {
    struct row {
        std::string field;
        std::string names;
    };
    for (const row &r : std::vector<row>{
             {"a.o/", "a.o|"},
             {"a.o", "a.o|"},
             {"a.o//", "a.o/|"},
             {"a b/", "a b|"},
             {" a/", " a|"},
             {"a/b", "a/b|"},
             {"a/ ", "a|"},
             {"sixteen-letters1", "sixteen-letters1|"},
             {"fifteen-letters/", "fifteen-letters|"},
             {"fifteen-letter /", "fifteen-letter |"},
             {"../../x/", "../../x|"},
             {"#1/20", "#1/20|"},
             {"__.SYMDEF SORTED", "__.SYMDEF SORTED|"},
             {"\xff\x01/", "\xff\x01|"},
             {std::string("ab\0cd/", 6), "ab|"},
         }) {
        EXPECT_EQ(names_in(ar_member(r.field, "x")), r.names) << r.field;
    }
}

TEST(u_arlist, special_members_are_not_listed) {
    for (const char *field :
         {"/", "", "__________EBEB_", "__________EBEB_/", "//"})
        EXPECT_EQ(names_in(ar_member(field, "x") + ar_member("a/", "")), "a|")
            << field;
    EXPECT_EQ(names_in(ar_member(std::string(16, '\0'), "x")), "");
}

TEST(u_arlist, ignore_file_gives_the_special_name) {
    EXPECT_STREQ(ignore_file(""), "");
    EXPECT_STREQ(ignore_file("/"), "/");
    EXPECT_STREQ(ignore_file("__________EBEB_"), "__________EBEB_");
    for (const char *name : {"a", "//", "/0", "__________EBEB", "_"})
        EXPECT_EQ(ignore_file(name), nullptr) << name;
}

TEST(u_arlist, long_names_come_from_the_table) {
    const std::string table =
        ar_member("//", "a-name-of-20-letters/\nother-long-name.o/\n");
    struct row {
        std::string field;
        std::string names;
    };
    for (const row &r : std::vector<row>{
             {"/0", "a-name-of-20-letters|"},
             {"/22", "other-long-name.o|"},
             {"/24", "her-long-name.o|"},
             {"/22/", "other-long-name.o|"},
             {"/20", "|"},  // where a name ends
             {"/21", "\nother-long-name.o|"},
             {"/ 22", "other-long-name.o|"},
             {"/+22", "other-long-name.o|"},
             {"/22x", "other-long-name.o|"},
             {"/40", "\n|"},
             {"/41", "|"},  // where the table ends
             {"/42", "|"},
             {"/-1", "|"},
             {"/4294967296", "|"},
             {"/999999999999999", "|"},
         }) {
        std::string user = ar_member(r.field, "x");
        EXPECT_EQ(names_in(table + user), r.names) << r.field;
        EXPECT_EQ(names_in(user + table), r.names) << r.field;
    }
}

TEST(u_arlist, a_slash_without_a_number_is_a_name) {
    const std::string table = ar_member("//", "other-long-name.o/\n");
    for (const char *field : {"/SYM64/", "/x", "/-", "/ +"}) {
        std::string kept(field, strcspn(field + 1, "/") + 1);
        EXPECT_EQ(names_in(table + ar_member(field, "")), kept + "|") << field;
    }
}

TEST(u_arlist, without_a_table_references_are_names) {
    EXPECT_EQ(names_in(ar_member("/0", "") + ar_member("/22", "")), "/0|/22|");
}

TEST(u_arlist, the_last_long_name_table_counts) {
    EXPECT_EQ(names_in(ar_member("//", "first/\n") + ar_member("/0", "") +
                       ar_member("//", "second/\n") + ar_member("/0", "")),
              "second|second|");
}

TEST(u_arlist, a_long_name_ends_with_the_table) {
    EXPECT_EQ(names_in(ar_member("//", "no-end") + ar_member("/0", "") +
                       ar_member("/3", "")),
              "no-end|end|");
    EXPECT_EQ(names_in(ar_member("//", "") + ar_member("/0", "")), "|");
    EXPECT_EQ(names_in(ar_member("//", "/") + ar_member("/0", "")), "|");
}

TEST(u_arlist, names_of_any_length_come_from_the_table) {
    for (size_t length : {16, 300, 1015, 1016, 5000, 100000}) {
        std::string name(length, 'n');
        EXPECT_EQ(names_of(list_of(support::ar_archive({{name, "x"}}))),
                  name + "|");
    }
}

TEST(u_arlist, gnu_archives_list_only_the_ordinary_members) {
    EXPECT_EQ(
        names_in(ar_member("/", std::string("\0\0\0\1\0\0\0\x5e_f\0", 11)) +
                 ar_member("//", "a-name-of-20-letters.o/\n") +
                 ar_member("/0", "1") + ar_member("b.o/", "2")),
        "a-name-of-20-letters.o|b.o|");
}

TEST(u_arlist, times_are_read_as_numbers) {
    struct row {
        const char *field;
        int32_t time;
    };
    for (const row &r :
         {row{"0", 0}, row{"", 0}, row{"x", 0}, row{"2147483647", INT32_MAX},
          row{"-1", -1}, row{"+7", 7}, row{" 12", 12}, row{"0x10", 0},
          row{"4294967297", 1}, row{"999999999999", -727379969},
          row{"12 34", 1234}}) {
        armember *list =
            list_of(ar_magic + ar_header{"a/", "0", r.field}.bytes());
        EXPECT_EQ(list->mtime, r.time) << r.field;
    }
}

TEST(u_arlist, sizes_may_have_blanks_around_them) {
    for (const char *field : {"4", "   4", "0000000004", "         4"}) {
        EXPECT_EQ(support::lines_of(list_of(
                      ar_magic + ar_header{"a/", field}.bytes() + "data")),
                  "a 0 68 4\n")
            << field;
    }
}

TEST(u_arlist, the_archive_stays_open_when_it_is_asked_for) {
    int descriptor = -1;
    armember *list = list_of(support::ar_archive({{"a", "one"}}), &descriptor);
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(fcntl(descriptor, F_GETFD), FD_CLOEXEC);
    char *data = getarmemb(descriptor, list);
    EXPECT_EQ(std::string(data, 3), "one");
    free(data);
    close(descriptor);
}

TEST(u_arlist, otherwise_it_is_closed) {
    int before = dup(0);
    close(before);
    list_of(support::ar_archive({{"a", "one"}, {std::string(20, 'b'), "2"}}));
    int after = dup(0);
    close(after);
    EXPECT_EQ(after, before);
}

TEST(u_arlist, data_is_read_in_any_order) {
    std::string large(200000, 'x');
    large += "end";
    int descriptor = -1;
    armember *list =
        list_of(support::ar_archive({{"a", "first"}, {"b", large}, {"c", ""}}),
                &descriptor);
    const armember *b = list->next;
    const armember *c = b->next;
    struct row {
        const armember *member;
        std::string data;
    };
    for (const row &r : std::vector<row>{
             {b, large}, {list, "first"}, {c, ""}, {list, "first"}}) {
        char *data = getarmemb(descriptor, r.member);
        EXPECT_EQ(std::string(data, r.data.size()), r.data);
        free(data);
    }
    close(descriptor);
}

TEST(u_arlist, data_that_is_gone_is_fatal) {
    int descriptor = -1;
    armember *list =
        list_of(support::ar_archive({{"a", "first"}}), &descriptor);
    EXPECT_EQ(truncate("x.a", 70), 0);
    EXPECT_FATAL(getarmemb(descriptor, list), 255,
                 "test: a: could not read all data\n");
    EXPECT_FATAL(getarmemb(-1, list), 255, "test: a: Bad file descriptor\n");
    close(descriptor);
}

TEST(u_arlist, a_file_that_cannot_be_opened_is_fatal) {
    EXPECT_FATAL(getarlist("none.a", nullptr), 255,
                 "test: none.a: No such file or directory\n");
}

// A map of n names.
std::vector<int32_t> map_of(const std::vector<std::string> &names) {
    std::vector<int32_t> map{static_cast<int32_t>(names.size())};
    std::string area;
    for (const std::string &name : names) {
        map.push_back(-1);  // not looked at
        map.push_back(static_cast<int32_t>(area.size()));
        area += name + '\0';
    }
    size_t words = map.size();
    map.resize(words + area.size() / 4 + 1);
    memcpy(map.data() + words, area.data(), area.size());
    return map;
}

TEST(u_arlist, a_map_renames_the_first_members) {
    const std::string archive =
        support::ar_archive({{"a", ""}, {"b", ""}, {"c", ""}});
    struct row {
        std::vector<std::string> names;
        std::string renamed;
    };
    for (const row &r : std::vector<row>{
             {{}, "a|b|c|"},
             {{"x"}, "x|b|c|"},
             {{"x", "b", "a-longer-name.o"}, "x|b|a-longer-name.o|"},
             {{"", "y", "z", "more", "than there are"}, "|y|z|"},
         }) {
        armember *list = list_of(archive);
        const char *b = list->next->name;
        arlmap(map_of(r.names).data(), list);
        EXPECT_EQ(names_of(list), r.renamed);
        if (r.renamed.find("|b|") != std::string::npos) {
            EXPECT_EQ(list->next->name, b);  // the string that it was
        }
    }
}

TEST(u_arlist, a_map_of_no_names_renames_nothing) {
    armember *list = list_of(support::ar_archive({{"a", ""}}));
    for (int32_t count : {0, -1, INT32_MIN})
        arlmap(&count, list);
    EXPECT_EQ(names_of(list), "a|");
    arlmap(map_of({"x"}).data(), nullptr);
}

TEST(u_arlist, headers_are_found_among_members_of_all_sizes) {
    std::vector<support::ar_file> files;
    std::string lines;
    int32_t offset = 8;
    unsigned random = 1;
    for (int i = 0; i < 3000; i++) {
        random = random * 1103515245 + 12345;
        size_t size = (random >> 16) % (i % 100 == 0 ? 300000 : 1 << i % 13);
        files.push_back({std::to_string(i), std::string(size, 'd')});
        offset += 60;
        lines += std::to_string(i) + " 0 " + std::to_string(offset) + " " +
                 std::to_string(size) + "\n";
        offset += static_cast<int32_t>(size + size % 2);
    }
    EXPECT_EQ(support::lines_of(list_of(support::ar_archive(files))), lines);
}

TEST(u_arlist, the_worked_example_is_what_it_says) {
    support::write_file("x.a", support::pictured_bytes("docs/formats/ar.md"));
    int descriptor = -1;
    armember *list = getarlist("x.a", &descriptor);
    EXPECT_EQ(support::lines_of(list),
              "hello.txt 86400 152 5\n"
              "a-rather-long-name.txt 86401 218 6\n");
    char *data = getarmemb(descriptor, list->next);
    EXPECT_EQ(std::string(data, 6), "world\n");
    free(data);
    close(descriptor);
}

}  // namespace
