// u_arlist_hostile_test.cc: files that are no archives, or damaged ones: each
// is listed as far as it is sound, or ends in its message.
#include "support/ar_image.h"
#include "support/ar_listing.h"
#include "support/tree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <string>
#include <vector>

namespace {

using support::ar_header;
using support::ar_magic;
using support::ar_member;

// What is listed, or the message.
struct row {
    std::string what;
    std::string bytes;
    std::string lines;
    std::string message;
};

void check_file(const row &r) {
    support::outcome end = support::listing_of("x.a");
    bool is_fatal = !r.message.empty();
    EXPECT_EQ(end.signal, 0) << r.what;
    EXPECT_EQ(end.exit_status, is_fatal ? 255 : 0) << r.what;
    EXPECT_EQ(end.out, is_fatal ? "" : r.lines) << r.what;
    EXPECT_EQ(end.err, is_fatal ? "test: " + r.message + "\n" : "") << r.what;
}

void check(const std::vector<row> &rows) {
    for (const row &r : rows) {
        support::write_file("x.a", r.bytes);
        check_file(r);
    }
}

std::string malformed_at(size_t offset) {
    return "malformed archive -- could not read entry header at " +
           std::to_string(offset);
}

const std::string first = ar_magic + ar_member("first/", "data");
const std::string first_line = "first 0 68 4\n";
const std::string no_magic = "x.a: could not read ar(1) magic";
const std::string other_magic = "x.a: does not contain ar(1) magic";

TEST(u_arlist_hostile, every_cut_of_the_magic) {
    for (size_t size = 0; size < 8; size++)
        check({{std::to_string(size) + " bytes", std::string(ar_magic, size),
                "", no_magic}});
    check({{"the magic alone", ar_magic, "", ""}});
}

TEST(u_arlist_hostile, every_other_byte_in_the_magic) {
    for (size_t i = 0; i < 8; i++) {
        std::string bytes = first;
        bytes[i] ^= 0x20;
        check({{"byte " + std::to_string(i), bytes, "", other_magic}});
    }
    check({{"a thin archive", "!<thin>\n" + first.substr(8), "", other_magic},
           {"zeros", std::string(1000, '\0'), "", other_magic}});
}

TEST(u_arlist_hostile, every_cut_of_a_header) {
    std::string second = ar_member("second/", "x");
    for (size_t size = 0; size < 60; size++) {
        check({{std::to_string(size) + " bytes of the first",
                ar_magic + second.substr(0, size), "", ""},
               {std::to_string(size) + " bytes of the second",
                first + second.substr(0, size), first_line, ""}});
    }
}

TEST(u_arlist_hostile, every_cut_of_data) {
    for (size_t size = 60; size < 64; size++)
        check({{std::to_string(size), first.substr(0, 8 + size), "",
                malformed_at(68)}});
}

TEST(u_arlist_hostile, end_marks) {
    for (const std::string &mark :
         {std::string("``"), std::string("\n`"), std::string("  "),
          std::string("\0\0", 2), std::string("`\r"), std::string("` "),
          std::string(" \n"), std::string("\xe0\x0a")}) {
        ar_header header{"a/", "0"};
        header.mark = mark;
        check({{"first: " + mark, ar_magic + header.bytes(), "",
                malformed_at(68)},
               {"second: " + mark, first + header.bytes(), "",
                malformed_at(132)}});
    }
}

TEST(u_arlist_hostile, sizes) {
    for (const std::string &size :
         {std::string(""),           std::string("-1"),
          std::string("-60"),        std::string("+0"),
          std::string("0x10"),       std::string("abc"),
          std::string("1 2"),        std::string("4x"),
          std::string("1.5"),        std::string("\t4"),
          std::string("4\0", 2),     std::string(10, '\0'),
          std::string("4/"),         std::string("5"),
          std::string("100"),        std::string("65536"),
          std::string("2147483647"), std::string("2147483648"),
          std::string("4294967236"), std::string("4294967295"),
          std::string("4294967296"), std::string("4294967300"),
          std::string("9999999999")}) {
        check(
            {{"size " + size, ar_magic + ar_header{"a/", size}.bytes() + "data",
              "", malformed_at(68)},
             {"table of " + size,
              ar_magic + ar_header{"//", size}.bytes() + "data", "",
              malformed_at(68)},
             {"second of " + size,
              first + ar_header{"a/", size}.bytes() + "data", "",
              malformed_at(132)}});
    }
}

TEST(u_arlist_hostile, odd_data_without_its_padding) {
    std::string bare = ar_header{"a/", "1"}.bytes() + "x";
    check({{"at the end", ar_magic + bare, "a 0 68 1\n", ""},
           {"before a header", ar_magic + bare + ar_member("b/", "12"), "",
            malformed_at(130)}});
}

TEST(u_arlist_hostile, long_name_tables) {
    const std::string user = ar_member("/2", "");
    const std::string table = ar_member("//", "x/long-name/\n");
    check({
        {"absent", ar_magic + user, "/2 0 68 0\n", ""},
        {"behind its user", ar_magic + user + table, "long-name 0 68 0\n", ""},
        {"twice", ar_magic + table + user + ar_member("//", "a/b/\n"),
         "b 0 142 0\n", ""},
        {"empty", ar_magic + ar_member("//", "") + user, " 0 128 0\n", ""},
        {"without an end", ar_magic + ar_member("//", "x/long") + user,
         "long 0 134 0\n", ""},
        {"only zeros", ar_magic + ar_member("//", std::string(9, '\0')) + user,
         " 0 138 0\n", ""},
        {"without a header behind", ar_magic + table, "", ""},
        {"only slashes", ar_magic + ar_member("//", "////////") + user,
         " 0 136 0\n", ""},
    });
}

TEST(u_arlist_hostile, offsets_of_names) {
    const std::string table = ar_magic + ar_member("//", "one/\ntwo/\n");
    for (const char *offset : {"/10", "/11", "/4294967296", "/2147483648",
                               "/999999999999999", "/-1", "/-4294967295"})
        check({{offset, table + ar_member(offset, ""), " 0 138 0\n", ""}});
    check({
        {"blank", table + ar_member("/ ", ""), "", ""},
        {"hexadecimal", table + ar_member("/0x5", ""), "one 0 138 0\n", ""},
        {"without a name's end", table + ar_member("/7", ""), "o 0 138 0\n",
         ""},
        {"no number", table + ar_member("/abc", ""), "/abc 0 138 0\n", ""},
    });
}

TEST(u_arlist_hostile, names_and_tables_of_other_kinds) {
    check({
        {"16 characters", ar_magic + ar_member("sixteen-letters1", ""),
         "sixteen-letters1 0 68 0\n", ""},
        {"names in the data",
         ar_magic + ar_member("#1/20", std::string(20, 'n') + "data"),
         "#1/20 0 68 24\n", ""},
        {"symbols", ar_magic + ar_member("/", "1234"), "", ""},
        {"wide symbols", ar_magic + ar_member("/SYM64/", "1234"),
         "/SYM64 0 68 4\n", ""},
        {"sorted symbols", ar_magic + ar_member("__.SYMDEF SORTED", "1234"),
         "__.SYMDEF SORTED 0 68 4\n", ""},
        {"two symbol tables",
         ar_magic + ar_member("/", "1234") + ar_member("/", "12") +
             ar_member("a/", ""),
         "a 0 194 0\n", ""},
        {"no name", ar_magic + ar_member("", "1234"), "", ""},
        {"a name of zeros", ar_magic + ar_member(std::string(16, '\0'), ""), "",
         ""},
        {"a name of high bytes",
         ar_magic + ar_member(std::string(16, '\xff'), ""),
         std::string(16, '\xff') + " 0 68 0\n", ""},
    });
}

TEST(u_arlist_hostile, dates) {
    for (const std::string &date :
         {std::string("yesterday"), std::string(""), std::string("-"),
          std::string(12, '\0'), std::string("4294967296")})
        check({{"date " + date, ar_magic + ar_header{"a/", "0", date}.bytes(),
                "a 0 68 0\n", ""}});
}

TEST(u_arlist_hostile, headers_inside_of_data_are_not_seen) {
    std::string inner = first;
    check({{"an archive in an archive", ar_magic + ar_member("x.a/", inner),
            "x.a 0 68 72\n", ""},
           {"overlapping headers",
            ar_magic + ar_header{"a/", "60"}.bytes() + ar_member("b/", ""),
            "a 0 68 60\n", ""}});
}

TEST(u_arlist_hostile, a_million_empty_members) {
    constexpr int count = 1000000;
    const std::string member = ar_member("m", "");
    std::string bytes = ar_magic;
    for (int i = 0; i < count; i++)
        bytes += member;
    support::write_file("x.a", bytes);
    int counted = 0;
    for (const armember *m = getarlist("x.a", nullptr); m; m = m->next)
        counted++;
    EXPECT_EQ(counted, count);
}

TEST(u_arlist_hostile, a_million_long_names) {
    constexpr int count = 1000000;
    std::string member = ar_member("", "");
    std::string members;
    std::string names;
    char text[64];
    for (int i = 0; i < count; i++) {
        snprintf(text, sizeof text, "/%-15zu", names.size());
        members += member.replace(0, 16, text);
        snprintf(text, sizeof text, "a-long-name-%d.o/\n", i);
        names += text;
    }
    support::write_file("x.a", ar_magic + members + ar_member("//", names));
    int i = 0;
    char name[64];
    for (const armember *m = getarlist("x.a", nullptr); m; m = m->next) {
        snprintf(name, sizeof name, "a-long-name-%d.o", i++);
        ASSERT_STREQ(m->name, name);
    }
    EXPECT_EQ(i, count);
}

// One name of a megabyte, used by all: it is held once.
TEST(u_arlist_hostile, a_long_name_with_many_users) {
    std::string members;
    for (int i = 0; i < 200; i++)
        members += ar_member("/0", "");
    support::write_file(
        "x.a", ar_magic + members + ar_member("//", std::string(1 << 20, 'n')));
    const armember *list = getarlist("x.a", nullptr);
    for (const armember *m = list; m != nullptr; m = m->next)
        ASSERT_EQ(m->name, list->name);
}

TEST(u_arlist_hostile, a_directory) {
    unlink("x.a");
    support::make_folders("x.a");
    check_file({"a directory", "", "", no_magic});
    rmdir("x.a");
}

TEST(u_arlist_hostile, a_device) {
    struct device {
        const char *path;
        std::string message;
    };
    for (const device &d :
         {device{"/dev/null", "test: /dev/null: could not read ar(1) magic\n"},
          device{"/dev/zero",
                 "test: /dev/zero: does not contain ar(1) magic\n"}}) {
        EXPECT_FATAL(getarlist(d.path, nullptr), 255, d.message);
    }
}

// A pipe under the archive's name that delivers these bytes, one by one.
void check_pipe(const row &r) {
    unlink("x.a");
    ASSERT_EQ(mkfifo("x.a", 0600), 0);
    pid_t writer = fork();
    if (writer == 0) {
        int descriptor = open("x.a", O_WRONLY);
        for (char byte : r.bytes) {
            if (write(descriptor, &byte, 1) != 1) _exit(1);
        }
        _exit(0);
    }
    check_file(r);
    int status;
    waitpid(writer, &status, 0);
    unlink("x.a");
}

TEST(u_arlist_hostile, a_pipe) {
    check_pipe({"nothing", "", "", no_magic});
    check_pipe({"a piece of the magic", "!<arc", "", no_magic});
    check_pipe({"the magic", ar_magic, "", ""});
    check_pipe({"other bytes", "12345678", "", other_magic});
    check_pipe({"a piece of a header", first.substr(0, 60), "", ""});
    check_pipe({"a member", first, "", "Seek failed"});
    check_pipe(
        {"no end mark", ar_magic + std::string(60, 'x'), "", malformed_at(68)});
}

// An archive with a hole in the data of its first member, so that this ends
// just before `end`, and with `last` behind it.
void write_sparse(int64_t end, const std::string &last) {
    support::write_file(
        "x.a", ar_magic + ar_header{"a/", std::to_string(end - 68)}.bytes());
    int descriptor = open("x.a", O_WRONLY);
    ASSERT_EQ(pwrite(descriptor, last.data(), last.size(), end),
              static_cast<ssize_t>(last.size()));
    ASSERT_EQ(ftruncate(descriptor, end + static_cast<int64_t>(last.size())),
              0);
    close(descriptor);
}

TEST(u_arlist_hostile, archives_around_2_gigabytes) {
    constexpr int64_t most = INT32_MAX;
    write_sparse(most, "");
    check_file({"to the last byte", "", "a 0 68 2147483579\n", ""});
    write_sparse(most + 1, "");
    check_file({"a byte more", "", "", malformed_at(68)});
    write_sparse(most - 61, ar_member("b/", ""));
    check_file(
        {"the last header", "", "a 0 68 2147483518\nb 0 2147483646 0\n", ""});
    write_sparse(most - 61, ar_member("b/", "12"));
    check_file({"data behind it", "", "", malformed_at(2147483646)});
    write_sparse(most - 59, ar_member("b/", ""));
    check_file(
        {"a header that ends behind it", "", "", malformed_at(2147483648)});
    write_sparse(5000000000, ar_member("b/", ""));
    check_file({"5 gigabytes", "", "", malformed_at(68)});
}

}  // namespace
