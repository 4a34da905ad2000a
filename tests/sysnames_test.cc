// sysnames_test.cc: the table of system names, with a host of the test's own.
#include "support/child.h"
#include "support/doc.h"
#include "support/tree.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <sys/utsname.h>
#include <tovan/sysnames.h>

namespace {

std::string system_name = "Unix";
std::string system_release = "2.1";
std::string machine = "pdp11";
bool fails = false;
int questions = 0;

}  // namespace

extern "C" int uname(struct utsname *host) noexcept {
    ++questions;
    if (fails) {
        errno = EIO;
        return -1;
    }
    *host = {};
    strcpy(host->sysname, system_name.c_str());
    strcpy(host->release, system_release.c_str());
    strcpy(host->machine, machine.c_str());
    return 0;
}

namespace {

const char table[] = "sysnames.tab";

void write_table(const std::string &content) {
    support::write_file(table, content);
    setsysnamestab(table);
}

// The eight values, blanks between them.
std::string values_of(char **record) {
    if (record == nullptr) return "(null)";
    std::string values = record[0];
    for (int i = 1; i < 8; ++i)
        values += std::string(" ") + record[i];
    return values;
}

std::string values_for(const std::string &content) {
    write_table(content);
    return values_of(sysnames(0, nullptr));
}

TEST(unms_fix, unms_fix_rows) {
    char plain[] = "plain";
    EXPECT_EQ(unms_fix(plain), plain);
    char empty[] = "";
    EXPECT_EQ(unms_fix(empty), empty);
    char tab[] = "a\tb";
    EXPECT_EQ(unms_fix(tab), tab);
    char blanks[] = " a b  c ";
    char *copy = unms_fix(blanks);
    EXPECT_STREQ(copy, "_a_b__c_");
    EXPECT_STREQ(blanks, " a b  c ");
    free(copy);
}

TEST(sysnames, gives_eight_values_and_eight_names) {
    write_table("Unix//2.*//pdp11//^ n v b o r c f\n");
    char **record = sysnames(0, nullptr);
    const char *expected[] = {
        "n",    "v",      "b",    "o",  "r",       "c",   "f",      "^",
        "Name", "SysVrs", "Base", "OS", "Release", "CPU", "Config", "Platform"};
    for (int i = 0; i < 16; ++i)
        EXPECT_STREQ(record[i], expected[i]) << i;
}

// One process a row: a match holds for good.
TEST(sysnames, defaults_rows) {
    const struct {
        const char *line;
        const char *values;
    } rows[] = {
        {"* n v b", "n v b Unix 2.1 pdp11 Unix-2.1-pdp11 ^"},
        {"* ^ ^ ^", "^ ^ ^ Unix 2.1 pdp11 Unix-2.1-pdp11 ^"},
        {"* n v b OS", "n v b OS 2.1 pdp11 OS-2.1-pdp11 ^"},
        {"* n v b ^ R", "n v b Unix R pdp11 Unix-R-pdp11 ^"},
        {"* n v b ^ ^ C", "n v b Unix 2.1 C Unix-2.1-C ^"},
        {"* n v b ^ ^ C ^", "n v b Unix 2.1 C Unix-2.1-C ^"},
        {"* n v b O R C conf", "n v b O R C conf ^"},
        {"* n v b ^^ R ^x", "n v b ^^ R ^x ^^-R-^x ^"},
    };
    for (const auto &row : rows) {
        support::outcome end = support::in_child(
            [&] { fputs(values_for(row.line).c_str(), stdout); });
        EXPECT_EQ(end.out, row.values) << row.line << end.err;
    }
}

TEST(sysnames, blanks_of_the_host_are_matched_and_stored_as_underscores) {
    machine = "sun 4 u";
    system_name = "Sun OS";
    EXPECT_EQ(values_for("Sun_OS//2.1//sun_4_u//^ n v b"),
              "n v b Sun_OS 2.1 sun_4_u Sun_OS-2.1-sun_4_u ^");
}

TEST(sysnames, the_first_line_that_matches_counts) {
    EXPECT_EQ(values_for("Other* a a a\n"
                         "Unix//2.1//pdp11 b b b\n"
                         "Unix//2.1//pdp11//^^ c c c\n"
                         "Unix//2.?//*//^ d d d\n"
                         "* e e e\n"),
              "d d d Unix 2.1 pdp11 Unix-2.1-pdp11 ^");
}

TEST(sysnames, layout_of_the_table) {
    EXPECT_EQ(values_for("\n"
                         "# * x x x\n"
                         " \t# * x x x\n"
                         " \t \n"
                         "#* x x \\\n"
                         " \t* \t one\\\n"
                         "two three\\\n"
                         "\\\n"
                         "  # five six"),
              "one two three # five six #-five-six ^");
}

TEST(sysnames, a_comment_is_not_continued) {
    EXPECT_EQ(values_for("# comment \\\n* n v b\n"),
              "n v b Unix 2.1 pdp11 Unix-2.1-pdp11 ^");
}

TEST(sysnames, a_continued_line_of_nothing_is_skipped) {
    EXPECT_EQ(values_for("\\\n\\\n\n* n v b\n"),
              "n v b Unix 2.1 pdp11 Unix-2.1-pdp11 ^");
}

TEST(sysnames, carriage_returns_at_line_ends_do_not_count) {
    EXPECT_EQ(values_for("* n v\\\r\nb\r\n"),
              "n v b Unix 2.1 pdp11 Unix-2.1-pdp11 ^");
}

TEST(sysnames, lines_of_any_length) {
    std::string name(100000, 'n');
    std::string pattern = "{";
    for (int i = 0; i < 20000; ++i)
        pattern += "p" + std::to_string(i) + ",";
    EXPECT_EQ(values_for(pattern + "*} " + name + " \\\n" + name + " b"),
              name + " " + name + " b Unix 2.1 pdp11 Unix-2.1-pdp11 ^");
}

TEST(sysnames, sysnames_takes_three_to_seven_values) {
    const std::string many = "test: sysnames.tab:2: too many fields\n";
    const std::string few = "test: sysnames.tab:2: too few fields\n";
    EXPECT_FATAL(values_for("x 1\n* 1 2 3 4 5 6 7 8\n"), 255, many);
    EXPECT_FATAL(values_for("x 1 2 3 4 5 6 7 8\n* 1 2\n"), 255, few);
    EXPECT_FATAL(values_for("x 1\n*\n"), 255, few);
    EXPECT_EQ(values_for("x 1\n* 1 2 3 4 5 6 7\n"), "1 2 3 4 5 6 7 ^");
}

TEST(sysnames, messages_carry_the_last_line_of_a_continued_one) {
    EXPECT_FATAL(values_for("x\n* 1 \\\n\\\n2\n* 1 2 3\n"), 255,
                 "test: sysnames.tab:4: too few fields\n");
}

TEST(sysnames, a_backslash_at_the_end_is_fatal) {
    const std::string text =
        "test: sysnames.tab:2: last line ends with a backslash\n";
    EXPECT_FATAL(values_for("a\nx 1 2 3\\"), 255, text);
    EXPECT_FATAL(values_for("a\nx 1 2 3\\\n"), 255, text);
    EXPECT_FATAL(values_for("a\n* 1 2 3\\\n"), 255, text);
    EXPECT_FATAL(values_for("a\\\n\\\n"), 255, text);
}

TEST(sysnames, no_match_is_fatal) {
    const std::string text =
        "test: Unix//2.1//pdp11//^ not matched in sysnames.tab\n";
    EXPECT_FATAL(values_for(""), 255, text);
    EXPECT_FATAL(values_for("unix//* n v b\n"), 255, text);
}

TEST(sysnames, a_table_that_cannot_be_opened_is_fatal) {
    setsysnamestab("none");
    EXPECT_FATAL(sysnames(0, nullptr), 255,
                 std::string("test: none: ") + strerror(ENOENT) + "\n");
}

TEST(sysnames, a_failed_uname_is_fatal) {
    write_table("* n v b\n");
    fails = true;
    EXPECT_FATAL(sysnames(0, nullptr), 255,
                 std::string("test: uname() failed, ") + strerror(EIO) + "\n");
}

TEST(sysnames, the_table_lies_below_the_installation_root) {
    support::write_file("morva/data/sysnames.tab", "* n v b\n");
    EXPECT_EQ(values_of(sysnames(0, nullptr)),
              "n v b Unix 2.1 pdp11 Unix-2.1-pdp11 ^");
}

TEST(sysnames, without_a_table_the_expected_name_is_told) {
    std::string file = std::string(getenv("MORVA")) + "/data/sysnames.tab";
    EXPECT_FATAL(sysnames(0, nullptr), 255,
                 "test: " + file + ": " + strerror(ENOENT) + "\n");
}

TEST(sysnames, flag_2_tells_the_name_only) {
    char *file = nullptr;
    EXPECT_EQ(sysnames(2, &file), nullptr);
    EXPECT_EQ(file, std::string(getenv("MORVA")) + "/data/sysnames.tab");
    free(file);
    setsysnamestab("mine");
    EXPECT_EQ(sysnames(2 | 1 | 4, &file), nullptr);
    EXPECT_STREQ(file, "mine");
    free(file);
    EXPECT_EQ(sysnames(2, nullptr), nullptr);
    EXPECT_EQ(questions, 0);
    setsysnamestab(nullptr);
    EXPECT_EQ(sysnames(2, &file), nullptr);
    EXPECT_EQ(file, std::string(getenv("MORVA")) + "/data/sysnames.tab");
    free(file);
}

TEST(sysnames, a_match_tells_the_name_too) {
    write_table("* n v b\n");
    char *file = nullptr;
    EXPECT_NE(sysnames(0, &file), nullptr);
    EXPECT_STREQ(file, table);
    EXPECT_NE(file, table);
    free(file);
}

TEST(sysnames, flag_1_lists_the_table) {
    write_table(
        "# comment\n* 1\n\n a\t b   c \\\n d\nlast 1 2 3 4 5 6 7 8 9\n");
    char **record = nullptr;
    EXPECT_EQ(support::stdout_of([&] { record = sysnames(1, nullptr); }),
              "*\t1\na\tb\tc\td\nlast\t1\t2\t3\t4\t5\t6\t7\t8\t9\n");
    EXPECT_EQ(record, nullptr);
    EXPECT_STREQ(sysnames(1, nullptr) == nullptr ? "null" : "record", "null");
}

TEST(sysnames, flag_4_traces_the_search) {
    write_table("other n v b\n* n v b\n");
    EXPECT_EQ(support::stderr_of([] { sysnames(4, nullptr); }),
              "sysnames(): file=sysnames.tab\n"
              "\tpattern='Unix//2.1//pdp11//^'\n"
              "sysnames(): trying 'other'\n"
              "sysnames(): trying '*'\n"
              "sysnames(): match succeeded\n\n");
}

TEST(sysnames, flags_1_and_4_trace_the_file_alone) {
    write_table("* n v b\n");
    support::outcome end = support::in_child([] { sysnames(1 | 4, nullptr); });
    EXPECT_EQ(end.out, "*\tn\tv\tb\n");
    EXPECT_EQ(end.err,
              "sysnames(): file=sysnames.tab\n"
              "\tpattern='Unix//2.1//pdp11//^'\n");
}

TEST(sysnames, after_a_match_the_flags_do_not_count) {
    write_table("* n v b\n");
    char **record = sysnames(0, nullptr);
    write_table("* other v b\n");
    system_name = "Changed";
    char *file = nullptr;
    for (int flags : {0, 1, 2, 4, 7}) {
        EXPECT_EQ(sysnames(flags, &file), record);
        EXPECT_EQ(file, nullptr);
    }
    EXPECT_EQ(values_of(record), "n v b Unix 2.1 pdp11 Unix-2.1-pdp11 ^");
    EXPECT_EQ(questions, 1);
}

TEST(sysnames, the_host_is_asked_once) {
    write_table("* n v b\n");
    support::stdout_of([] { sysnames(1, nullptr); });
    system_name = "Changed";
    EXPECT_EQ(values_of(sysnames(0, nullptr)),
              "n v b Unix 2.1 pdp11 Unix-2.1-pdp11 ^");
    EXPECT_EQ(questions, 1);
}

TEST(set_sys_defl, fills_open_values_only) {
    set_sys_defl(0, "too early");
    write_table("* ^ v ^^\n");
    char **record = sysnames(0, nullptr);
    EXPECT_STREQ(record[0], "^");
    const char value[] = "filled";
    for (int i = -1; i <= 16; ++i)
        set_sys_defl(i, value);
    EXPECT_EQ(record[0], value);
    EXPECT_STREQ(record[1], "v");
    EXPECT_STREQ(record[2], "^^");
    EXPECT_STREQ(record[3], "Unix");
    EXPECT_EQ(record[7], value);
    EXPECT_STREQ(record[8], "Name");
}

const char page[] = "formats/system-names.md";

TEST(system_names_page, shows_what_the_example_gives) {
    write_table(support::doc_block(page, "sysnames.tab"));
    for (const auto &row :
         support::doc_table(page, "| System | Release | Machine | Values |")) {
        system_name = row[0];
        system_release = row[1];
        machine = row[2];
        support::outcome end = support::in_child(
            [] { fputs(values_of(sysnames(0, nullptr)).c_str(), stdout); });
        EXPECT_EQ(end.out, row[3]) << row[0] << end.err;
    }
}

TEST(system_names_page, lists_the_fields_in_order) {
    write_table("* n v b\n");
    char **record = sysnames(0, nullptr);
    auto rows = support::doc_table(
        page, "| Index | Name | Left open by the line, it is |");
    ASSERT_EQ(rows.size(), 8u);
    for (size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(rows[i][0], std::to_string(i));
        EXPECT_EQ(rows[i][1], record[8 + i]);
    }
}

}  // namespace
