// sfixfile_test.cc: files through the dictionary.
#include "support/child.h"
#include "support/dictionary.h"
#include "support/doc.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <tovan/errexit.h>
#include <tovan/fmatch.h>
#include <tovan/istype.h>
#include <tovan/sfdict.h>
#include <tovan/sfixfile.h>
#include <unistd.h>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string written;
int calls;

void collect(const char *text, int length) {
    written.append(text, static_cast<size_t>(length));
    ++calls;
}

// What came of a file.
struct outcome {
    std::string text;
    std::string messages;
    int status;
};

// Writes the file "in" and fixes it.
outcome fix(const std::string &content, int check = 0) {
    support::write_file("in", content);
    written.clear();
    calls = 0;
    outcome result;
    setsfwrite(collect);
    result.messages =
        support::stderr_of([&] { result.status = sfixfile("in", check); });
    result.text = written;
    return result;
}

struct row {
    std::string content;
    std::string text;
};

class sfixfile_test : public support::dictionary_test {
  protected:
    void SetUp() override {
        dictionary_test::SetUp();
        define("A", "value");
        define("SYS", "linux");
    }

    static void define(const std::string &name, const std::string &value) {
        sf_dictext(name.c_str(), value.c_str(), "test", 1, 0);
    }

    // Files without errors.
    static void expect_rows(const std::vector<row> &rows) {
        for (const row &each : rows) {
            outcome result = fix(each.content);
            EXPECT_EQ(result.text, each.text) << each.content;
            EXPECT_EQ(result.messages, "") << each.content;
            EXPECT_EQ(result.status, 0) << each.content;
        }
    }

    // Files that end the process with a message.
    static void expect_fatal(const std::vector<row> &rows) {
        for (const row &each : rows) {
            support::write_file("in", each.content);
            setsfwrite(collect);
            EXPECT_FATAL(sfixfile("in", 0), 255, "test: " + each.text + "\n");
        }
    }

    // The same when structural errors do not: reported, and status 2.
    static void expect_reported(const std::vector<row> &rows) {
        sf_uflag = 4;
        for (const row &each : rows) {
            outcome result = fix(each.content);
            EXPECT_EQ(result.messages, each.text) << each.content;
            EXPECT_EQ(result.status, 2) << each.content;
        }
    }
};

TEST_F(sfixfile_test, texts_are_copied_and_expanded) {
    expect_rows({{"", ""},
                 {"plain\n", "plain\n"},
                 {"no newline", "no newline\n"},
                 {"\n\n", "\n\n"},
                 {" \t indented\n", " \t indented\n"},
                 {"trailing \t\n", "trailing \t\n"},
                 {"dos\r\n", "dos\n"},
                 {"<@A@>\n", "<value>\n"},
                 {"  @A@\n", "  value\n"},
                 {"@A@\n", "value\n"},
                 {"@@\n", "@\n"},
                 {"@\n", "@\n"},
                 {"@ x\n@1\n@$x\n", "@ x\n@1\n@$x\n"},
                 {"@U:text@\n", "text\n"}});
}

TEST_F(sfixfile_test, writer_is_called_once_a_line) {
    fix("one\n@A@ @A@ @A|@\n\n@{ x\n@| *\n@}\nfour\n");
    EXPECT_EQ(calls, 4);
}

TEST_F(sfixfile_test, bytes_are_kept) {
    std::string bytes;
    for (int c = 0; c < 256; ++c) {
        if (c != '\n' && c != '@' && c != '\r') bytes += static_cast<char>(c);
    }
    EXPECT_EQ(fix(bytes + "x\n").text, bytes + "x\n");
    EXPECT_EQ(fix(bytes + "@A@\n").text, bytes + "value\n");
    EXPECT_EQ(fix("@A@" + bytes + "x\n").text, "value" + bytes + "x\n");
}

TEST_F(sfixfile_test, nul_ends_an_argument) {
    outcome result = fix(std::string("@A:\0@A@\n", 8));
    EXPECT_EQ(result.text, std::string("@A:\0value\n", 10));
    EXPECT_EQ(result.messages, "in:1: missing terminating '@' in 'A:'\n");
}

TEST_F(sfixfile_test, end_mark_ends_the_file) {
    expect_rows({{"a\n@$EOF\nb\n", "a\n"},
                 {"a\n @$EOF\nb\n", "a\n @$EOF\nb\n"},
                 {"a\n@$EOF \nb\n", "a\n@$EOF \nb\n"},
                 {"a\n@$EOF\r\nb\n", "a\n"},
                 {"@$EOF", ""}});
}

TEST_F(sfixfile_test, end_mark_is_not_counted) {
    fix("a\nb\n@$EOF\nc\n");
    EXPECT_EQ(sfixfile_lc, 2);
    fix("a\n\n#\nb");
    EXPECT_EQ(sfixfile_lc, 4);
}

TEST_F(sfixfile_test, nothing_behind_an_end_mark_is_ever_read) {
    expect_reported({{"@{ x\n@| y\n@$EOF\n@}\n@!behind\n",
                      "test: in:2: unterminated case\n"
                      "test: in: unclosed case statement\n"},
                     {"@{ x\n@| y\n@{ z\n@$EOF\n@}\n@}\n",
                      "test: in:3: unterminated case\n"
                      "test: in:3: unterminated case\n"
                      "test: in: unclosed case statement\n"}});
}

TEST_F(sfixfile_test, file_name_is_a_name) {
    EXPECT_EQ(fix("@__FILE__@\n").text, "in\n");
    EXPECT_EQ(support::place_of("__FILE__"), "built-in:0");
    EXPECT_STREQ(sfixfile_file, "in");
    EXPECT_EQ(fix("x\n").status, 0);
}

TEST_F(sfixfile_test, file_name_is_expanded) {
    support::write_file("x@A@", "@__FILE__@\n");
    written.clear();
    setsfwrite(collect);
    EXPECT_EQ(sfixfile("x@A@", 0), 0);
    EXPECT_EQ(written, "xvalue\n");
}

TEST_F(sfixfile_test, comments_are_dropped) {
    expect_rows({{"@# comment\nx\n", "x\n"},
                 {" \t @# comment\nx\n", "x\n"},
                 {"x @# text@A@\n", "x @# textvalue\n"}});
}

TEST_F(sfixfile_test, operands_of_comments_are_expanded_too) {
    outcome result = fix("@# @A!\n");
    EXPECT_EQ(result.messages, "in:1: unsupported @ operator in 'A!'\n");
    EXPECT_EQ(result.status, 1);
}

TEST_F(sfixfile_test, first_matching_label_selects_its_branch) {
    expect_rows({
        {"@{ @SYS@\n@| linux\none\n@| lin*\ntwo\n@}\nend\n", "one\nend\n"},
        {"@{ @SYS@\n@| sun\none\n@| lin*\ntwo\n@}\nend\n", "two\nend\n"},
        {"@{ @SYS@\n@| sun hp\none\n@| x\ntwo\n@}\nend\n", "end\n"},
        {"@{ @SYS@\n@| sun \t hp linux\none\n@}\nend\n", "one\nend\n"},
        {"@{@SYS@ \t\n@|linux\none\n@}end\nend\n", "one\nend\n"},
        {"\t@{ @SYS@\n  @| linux\none\n \t@}\nend\n", "one\nend\n"},
        {"@{ a b\n@| a*\none\n@}\n", "one\n"},
        {"@{ x\n@| @U:y@ @A+x@\none\n@}\n", "one\n"},
        {"@{ x\n@|\none\n@| *\ntwo\n@}\n", "two\n"},
        {"@{\n@| *\nempty\n@}\n", "empty\n"},
    });
}

TEST_F(sfixfile_test, labels_end_the_selected_branch) {
    expect_rows(
        {{"@{ x\n@| x\n1\n@| *\n2\n@| x\n3\n@}\n4\n", "1\n4\n"},
         {"@{ x\n@| x\n1\n@| y\n@{ x\n@| x\n2\n@}\n@}\n4\n", "1\n4\n"}});
}

TEST_F(sfixfile_test, cases_nest) {
    std::string inner = "@{ @SYS@\n@| linux\nl\n@| *\nother\n@}\n";
    expect_rows({
        {"@{ x\n@| x\na\n" + inner + "b\n@| *\nc\n@}\nd\n", "a\nl\nb\nd\n"},
        {"@{ x\n@| y\na\n" + inner + "b\n@| *\nc\n@}\nd\n", "c\nd\n"},
        {"@{ x\n@| y\n@{ 1\n@| 1\n" + inner + "@}\n@}\nd\n", "d\n"},
    });
}

TEST_F(sfixfile_test, leading_tabs_go_one_for_each_open_case) {
    expect_rows({
        {"\tx\n@{ 1\n@| 1\n\t\tx\n\tx\nx\n \tx\n"
         "@{ 2\n@| 2\n\t\t\tx\n\tx\n@}\n\t\tx\n@}\n\tx\n",
         "\tx\n\tx\nx\nx\n \tx\n\tx\nx\n\tx\n\tx\n"},
        {"@{ 1\n@| 1\n\t\t@A@\n@}\n", "\tvalue\n"},
    });
}

TEST_F(sfixfile_test, tabs_of_values_stay) {
    define("T", "\t\tx");
    EXPECT_EQ(fix("@{ 1\n@| 1\n\t@T@\n@}\n").text, "\t\tx\n");
}

TEST_F(sfixfile_test, lines_of_unselected_branches_are_dropped) {
    expect_rows({{"@{ 1\n@| 2\n@!error\n@#\n@-x\n@A@\n@}\nend\n", "end\n"},
                 {"@{ 1\n@| 1\nx\n@| 2\n@!error\n@-x\n@}\nend\n", "x\nend\n"}});
}

TEST_F(sfixfile_test, operands_in_skipped_parts_are_expanded) {
    outcome result = fix("@{ 1\n@| 2\n@# @A!\ntext @A!\n@| @A?\n@}\n", 1);
    EXPECT_EQ(result.messages,
              "in:3: unsupported @ operator in 'A!'\n"
              "test: in:3: possible syntax error\n"
              "in:5: terminating '@' missing in 'A?'\n"
              "test: in:5: possible syntax error\n");
    EXPECT_EQ(result.status, 1);
}

TEST_F(sfixfile_test, wrong_references_are_reported_counted_and_kept) {
    outcome result = fix("x\n@A! @A@ @A\n");
    EXPECT_EQ(result.text, "x\n@A! value @A\n");
    EXPECT_EQ(result.messages,
              "in:2: unsupported @ operator in 'A! @A@ @A'\n"
              "in:2: missing terminating '@' in 'A'\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(fix("x\n").status, 0);
}

TEST_F(sfixfile_test, checked_lines_are_reported_once_more) {
    EXPECT_EQ(fix("@A! @A?\n", 1).messages,
              "in:1: unsupported @ operator in 'A! @A?'\n"
              "in:1: terminating '@' missing in 'A?'\n"
              "test: in:1: possible syntax error\n");
}

TEST_F(sfixfile_test, checked_lines_without_a_program_name) {
    support::write_file("in", "@A!\n");
    setsfwrite(collect);
    EXPECT_EQ(support::in_child([] {
                  progname = nullptr;
                  sfixfile("in", 1);
              }).err,
              "in:1: unsupported @ operator in 'A!'\n"
              "in:1: possible syntax error\n");
}

TEST_F(sfixfile_test, structural_errors_end_the_process) {
    expect_fatal({
        {"@{ x\ntext\n@}\n", "in:2: first line of case not label"},
        {"@{ x\n", "in:1: first line of case not label"},
        {"@{ x\n@}\n", "in:2: first line of case not label"},
        {"@{ x\n@{ y\n", "in:2: first line of case not label"},
        {"@{ x\n@| y\n", "in:2: unterminated case"},
        {"@{ x\n@| x\n1\n@| y\n", "in:4: unterminated case"},
        {"@{ x\n@| y\n@{ z\n@}\n", "in:4: unterminated case"},
        {"@{ x\n@| x\n", "in: unclosed case statement"},
        {"@}\n@}\n", "in:2: case or label not in switch"},
        {"@}\n@| x\n", "in:2: case or label not in switch"},
        {"@! what @A@ is \t\n", "Error: what value is"},
        {"@!\n", "Error: "},
        {"@- x@A@\n", "@-xvalue: invalid flag"},
        {"@-\n", "@-: invalid flag"},
        {"@-s\n", "@-s: invalid flag"},
    });
}

TEST_F(sfixfile_test, structural_errors_are_counted_with_flags) {
    expect_reported({
        {"@{ x\ntext\n@| x\n@}\n",
         "test: in:2: first line of case not label\n"},
        {"@{ x\n",
         "test: in:1: first line of case not label\n"
         "test: in:1: unterminated case\n"
         "test: in: unclosed case statement\n"},
        {"@! x\n@!y\n", "test: Error: x\ntest: Error: y\n"},
        {"@-x\n", "test: @-x: invalid flag\n"},
    });
}

TEST_F(sfixfile_test, case_without_label_goes_on_at_the_first_one) {
    sf_uflag = 4;
    EXPECT_EQ(fix("@{ x\ndropped\n@| x\none\n@}\ntwo\n").text, "one\ntwo\n");
    EXPECT_EQ(fix("@{ x\n@}\ntwo\n").text, "two\n");
}

TEST_F(sfixfile_test, structural_errors_without_a_program_name) {
    support::write_file("in", "@! x\n");
    support::outcome child = support::in_child([] {
        progname = nullptr;
        sfixfile("in", 0);
    });
    EXPECT_EQ(child.err, "Error: x\n");
    EXPECT_EQ(child.exit_status, 255);
}

TEST_F(sfixfile_test, structural_errors_replace_the_status) {
    sf_uflag = 4;
    EXPECT_EQ(fix("@A!\n@! x\n").status, 2);
    EXPECT_EQ(fix("@! x\n@A!\n").status, 3);
    EXPECT_EQ(fix("@! @A!\n").status, 2);
}

TEST_F(sfixfile_test, stray_esac_is_found_at_the_end) {
    expect_fatal({{"@}\nx\n", "in: unclosed case statement"}});
    sf_uflag = 4;
    outcome result = fix("a\n@}\n\tb\n");
    EXPECT_EQ(result.text, "a\n\tb\n");
    EXPECT_EQ(result.messages, "test: in: unclosed case statement\n");
}

TEST_F(sfixfile_test, second_stray_esac_is_reported) {
    expect_reported({{"@}\n@}\n@}\n",
                      "test: in:2: case or label not in switch\n"
                      "test: in:3: case or label not in switch\n"
                      "test: in: unclosed case statement\n"}});
}

TEST_F(sfixfile_test, case_behind_a_stray_esac_makes_up_for_it) {
    sf_uflag = 4;
    outcome result = fix("@}\n@{ x\n@| x\n\ta\n");
    EXPECT_EQ(result.text, "\ta\n");
    EXPECT_EQ(result.messages, "");
}

TEST_F(sfixfile_test, label_outside_of_cases_skips_to_an_esac) {
    expect_fatal({{"a\n@| x\nb\n@}\n", "in: unclosed case statement"},
                  {"@| x\n", "in:1: unterminated case"}});
    sf_uflag = 4;
    outcome result = fix("a\n@| x\nb\n@{ y\n@}\nc\n@}\nd\n");
    EXPECT_EQ(result.text, "a\nd\n");
    EXPECT_EQ(result.messages, "test: in: unclosed case statement\n");
}

TEST_F(sfixfile_test, label_behind_a_stray_esac_is_reported) {
    sf_uflag = 4;
    outcome result = fix("@}\n@| x\na\n@}\nb\n");
    EXPECT_EQ(result.text, "b\n");
    EXPECT_EQ(result.messages,
              "test: in:2: case or label not in switch\n"
              "test: in: unclosed case statement\n");
}

TEST_F(sfixfile_test, error_line_in_a_selected_branch_is_reported) {
    expect_fatal({{"@{ x\n@| x\n@! @SYS@: no\n@}\n", "Error: linux: no"}});
}

TEST_F(sfixfile_test, flag_sets_the_split_character) {
    define("L", "a b");
    EXPECT_EQ(fix("@-S+\n@L\\_@\n").text, "a +\n\t\tb\n");
    EXPECT_EQ(sf_splitchar, '+');
    EXPECT_EQ(fix(" @- Sxy\n@L\\_@\n").text, "a x\n\t\tb\n");
    EXPECT_EQ(fix("@-S\n@L\\_@\n").text, "a \n\t\tb\n");
    EXPECT_EQ(sf_splitchar, '\0');
    EXPECT_EQ(fix("@{ 1\n@| 2\n@-S+\n@}\n").text, "");
    EXPECT_EQ(sf_splitchar, '\0');
}

TEST_F(sfixfile_test, trailing_white_space_of_operands_is_removed) {
    expect_rows({{"@{ x \t\v\f\n@| x\none\n@}\n", "one\n"}});
    define("S", " \t\n");
    expect_rows({{"@{ x@S@\n@| x\none\n@}\n", "one\n"},
                 {"@{@S@x\n@| x\none\n@| *\ntwo\n@}\n", "two\n"}});
}

TEST_F(sfixfile_test, bit_1_writes_nothing) {
    sf_uflag = 2;
    outcome result = fix("@A@\n@A!\n");
    EXPECT_EQ(result.text, "");
    EXPECT_EQ(result.status, 1);
}

TEST_F(sfixfile_test, usage_trace_lists_the_names) {
    sf_uflag = 1;
    support::write_file("in",
                        "@A@ @U:x@\n@{ @SYS@\n@| no @A@\n\t@B@\n@}\n"
                        "@! @E@\n@-?\n@}\n@}\n@$EOF\n@C@\n");
    setsfwrite(collect);
    written.clear();
    int status = -1;
    EXPECT_EQ(support::stdout_of([&] { status = sfixfile("in", 0); }),
              "in:000001:A\nin:000001:U\nin:000002:SYS\nin:000003:A\n"
              "in:000004:B\nin:000006:E\n");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(written, "");
}

TEST_F(sfixfile_test, usage_trace_counts_wrong_references) {
    sf_uflag = 1;
    outcome result = fix("@A!\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.messages, "in:1: unsupported @ operator in 'A!'\n");
}

TEST_F(sfixfile_test, state_starts_anew_with_each_file) {
    sf_uflag = 4;
    fix("@{ x\n@| x\n@A!\n@! e\n");
    outcome result = fix("\ta\n");
    EXPECT_EQ(result.text, "\ta\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(sfixfile_lc, 1);
}

TEST_F(sfixfile_test, files_that_cannot_be_read_are_fatal) {
    EXPECT_FATAL(sfixfile("no/such", 0), 255, "test: no/such: cannot open\n");
    support::make_folders("folder");
    EXPECT_FATAL(sfixfile("folder", 0), 255, "test: folder: Is a directory\n");
}

TEST_F(sfixfile_test, standard_input_serves_one_reader) {
    setsfwrite([](const char *text, int length) {
        fwrite(text, 1, static_cast<size_t>(length), stdout);
    });
    EXPECT_EQ(support::in_child([] { sfixfile("-", 0); }, "@__FILE__@\n").out,
              "-\n");
    EXPECT_FATAL(
        {
            sfdict("-");
            sfixfile("-", 0);
        },
        255, "test: cannot use stdin twice\n");
}

// Standard input and other files are read in different ways.
TEST_F(sfixfile_test, standard_input_is_cut_into_lines_like_files) {
    const std::string nul("a\0b\r\n\0", 6);
    for (const std::string &content :
         {std::string(""), std::string("\n"), std::string("a"),
          std::string("a\r"), std::string("\r"), std::string("\r\r\n\r"),
          std::string("\x1a"), std::string("a\n\x1a"), std::string("a\x1a"),
          std::string("a\r\x1a"), std::string("a\x1a\r"),
          std::string("\x1a\nb"), std::string("a\n@$EOF\nb\n"), nul,
          nul + "@A@" + nul, std::string(70000, 'x') + "\n@A@\r\ny"}) {
        std::string from_stdin =
            support::in_child(
                [] {
                    written.clear();
                    sfixfile("-", 0);
                    fwrite(written.data(), 1, written.size(), stdout);
                },
                content)
                .out;
        EXPECT_EQ(from_stdin, fix(content).text) << content.substr(0, 20);
    }
}

TEST_F(sfixfile_test, stream_of_standard_input_goes_on_behind_the_end_mark) {
    setsfwrite(collect);
    EXPECT_EQ(support::in_child(
                  [] {
                      sfixfile("-", 0);
                      for (int c; (c = getchar()) != EOF;)
                          putchar(c);
                  },
                  "a\n@$EOF\nrest\n")
                  .out,
              "rest\n");
}

// Files are read in blocks of 65536 bytes, which grow with longer lines.
TEST_F(sfixfile_test, lines_across_blocks_are_whole) {
    for (size_t length : {65533u, 65534u, 65535u, 65536u, 65537u, 131072u}) {
        std::string first(length, 'x');
        std::string second(70, 'y');
        EXPECT_EQ(fix(first + "\n" + second + "\n@A@\n").text,
                  first + "\n" + second + "\nvalue\n");
        EXPECT_EQ(fix(first + "\r\n\r\n" + second).text,
                  first + "\n\n" + second + "\n");
        EXPECT_EQ(fix(first + "@A@\x1a").text, first + "value\n");
        EXPECT_EQ(fix("\n" + first).text, "\n" + first + "\n");
    }
}

TEST_F(sfixfile_test, many_lines_are_cut_as_they_are) {
    std::mt19937 random(64);
    std::string content;
    std::string expected;
    for (int i = 0; i < 20000; ++i) {
        std::string line(random() % (i % 1000 == 0 ? 100000 : 100), 'z');
        bool has_reference = random() % 5 == 0;
        content += line + (has_reference ? "@A@\r\n" : "\n");
        expected += line + (has_reference ? "value\n" : "\n");
    }
    EXPECT_EQ(fix(content).text, expected);
    EXPECT_EQ(sfixfile_lc, 20000);
}

TEST_F(sfixfile_test, no_descriptor_is_left_open) {
    fix("x\n");
    int before = dup(0);
    close(before);
    sf_uflag = 4;
    for (const char *content : {"x\n", "@$EOF\nx\n", "@{ x\n", "@! x\n"})
        fix(content);
    int after = dup(0);
    close(after);
    EXPECT_EQ(after, before);
}

TEST_F(sfixfile_test, documented_file_becomes_the_documented_output) {
    const char page[] = "formats/fixed-file.md";
    EXPECT_EQ(support::read_dictionary(support::doc_block(page, "dictionary")),
              "");
    outcome result = fix(support::doc_block(page, "input"));
    EXPECT_EQ(result.text, support::doc_block(page, "output"));
    EXPECT_EQ(result.messages, "");
}

TEST_F(sfixfile_test, deep_cases_use_no_stack) {
    const int deep = 100000;
    std::string content;
    for (int i = 0; i < deep; ++i)
        content += "@{ x\n@| x\n";
    content += "\t\ttext\n";
    for (int i = 0; i < deep; ++i)
        content += "@}\n";
    EXPECT_EQ(fix(content).text, "text\n");
    EXPECT_EQ(fix("@{ 1\n@| 2\n" + content + "@}\nend\n").text, "end\n");
}

TEST_F(sfixfile_test, line_of_100_megabytes_is_a_line) {
    std::string line(100000000, 'x');
    EXPECT_TRUE(fix(line + "@A@\n").text == line + "value\n");
    EXPECT_TRUE(fix("@{ x\n@| " + line + " x\n" + line + "\n@}\n").text ==
                line + "\n");
}

// What may be said of a file that was cut off somewhere.
bool is_known_message(const std::string &line) {
    for (const char *known :
         {": first line of case not label", ": unterminated case",
          "test: in: unclosed case statement",
          "test: Error: ", ": invalid flag", ": missing terminating '@' in '",
          ": terminating '@' missing in '", ": unsupported @ operator in '",
          ": unsupported % operator in '"}) {
        if (line.find(known) != std::string::npos) return true;
    }
    return false;
}

TEST_F(sfixfile_test, file_may_end_anywhere) {
    const std::string content =
        "@# @A@\ntext @A%s@ @U:x\\@y@ @A?@@@\n@{ @SYS@\n@| hp* sun\none\n"
        "\t@{ @A@\n\t@| *\n\t\ttwo\n\t@}\n@| lin*\n\t@{ x\n\t@| y\n"
        "\t@| x\n\t\t@A@\n\t@}\n\tthree\n@| *\n\t@! none for @SYS@\n@}\n"
        "@-S+\nfour\n@$EOF\nfive\n";
    sf_uflag = 4;
    for (size_t n = 0; n <= content.size(); ++n) {
        outcome result = fix(content.substr(0, n));
        std::istringstream messages(result.messages);
        for (std::string line; std::getline(messages, line);)
            EXPECT_TRUE(is_known_message(line)) << n << ": " << line;
        EXPECT_EQ(result.status == 0, result.messages.empty()) << n;
    }
    EXPECT_EQ(written, "text value x@y 1@\nvalue\nthree\nfour\n");
}

// sfput and settildecnv.

// What sfput writes of a text in a process where tildes are converted.
std::string converted(const std::string &text, int convert = 1) {
    return support::in_child([&] {
               setsfwrite([](const char *bytes, int length) {
                   fwrite(bytes, 1, static_cast<size_t>(length), stdout);
               });
               if (settildecnv() != 0) abort();
               std::string copy = text;
               sfput(copy.data(), static_cast<int>(copy.size()), convert);
           })
        .out;
}

TEST(sfput, tilde_sequences_are_converted) {
    const row rows[] = {
        {"plain", "plain"},
        {"~~", "~"},
        {"~.", "\xff"},
        {"~~x~.\n", "~x\xff\n"},
        {"~~~~", "~~"},
        {"~~.", "~."},
        {"a~C,b",
         "a\x80"
         "b"},
        {"~pi", "\xe3"},
        {"~bx~^>", "\xfe\x10"},
        {"~~pi", "~pi"},
        {"~~~pi", "~\xe3"},
    };
    for (const row &each : rows)
        EXPECT_EQ(converted(each.content), each.text) << each.content;
}

TEST(sfput, every_mnemonic_is_converted) {
    std::string text;
    std::string expected;
    for (int code = 0; code < 256; ++code) {
        const char *mnemonic = frogtostr(code);
        if (mnemonic == nullptr) continue;
        text += std::string("<~") + mnemonic + ">";
        expected += std::string("<") + static_cast<char>(code) + ">";
    }
    EXPECT_EQ(converted(text), expected);
}

TEST(sfput, unknown_tilde_sequences_stay) {
    for (const char *text :
         {"x~", "~x", "~xy", "a~ b", "~p", "~ pi", "~\\~", "~PI"})
        EXPECT_EQ(converted(text), text);
}

TEST(sfput, only_the_tilde_of_an_unknown_sequence_is_passed_over) {
    EXPECT_EQ(converted("~a~."), "~a\xff");
    EXPECT_EQ(converted("~x~pi"), "~x\xe3");
    EXPECT_EQ(converted("~xpi~~"), "~xpi~");
}

TEST(sfput, mnemonics_lie_inside_the_length) {
    support::outcome child = support::in_child([] {
        setsfwrite([](const char *bytes, int length) {
            fwrite(bytes, 1, static_cast<size_t>(length), stdout);
        });
        settildecnv();
        char text[] = "x~pi";
        sfput(text, 3, 1);
        char dots[] = "x~.";
        sfput(dots, 2, 1);
    });
    EXPECT_EQ(child.out, "x~px~");
}

TEST(sfput, single_characters_are_not_converted) {
    EXPECT_EQ(converted("~"), "~");
    EXPECT_EQ(converted(""), "");
}

TEST(sfput, nothing_is_converted_unless_asked_for) {
    EXPECT_EQ(converted("~~", 0), "~~");
    setsfwrite(collect);
    written.clear();
    char text[] = "~~";
    sfput(text, 2, 1);
    EXPECT_EQ(written, "~~");
}

TEST(sfput, without_a_writer_it_is_a_logic_error) {
    const char message[] = "test: Logic error: setsfwrite() not been called\n";
    char text[] = "x";
    setsfwrite(nullptr);
    EXPECT_FATAL(sfput(text, 1, 0), 255, message);
    support::write_file("in", "x\n");
    EXPECT_FATAL(sfixfile("in", 0), 255, message);
}

TEST(sfput, lines_of_files_are_converted) {
    EXPECT_EQ(support::in_child([] {
                  support::empty_dictionary();
                  sf_dictext("T", "~pi", "t", 1, 0);
                  settildecnv();
                  fix("~~x~.\n@T@ ~\n\n");
                  fwrite(written.data(), 1, written.size(), stdout);
              }).out,
              "~x\xff\n\xe3 ~\n\n");
}

// The plain model: files as trees, walked by recursion.
class slow_model {
  public:
    explicit slow_model(const std::string &content) {
        std::istringstream lines(content);
        for (std::string line; std::getline(lines, line);)
            lines_.push_back(line);
    }

    // The text of the file, which has no errors.
    std::string fixed() {
        at_ = 0;
        std::string text;
        copy(&text, true, 0);
        return text;
    }

  private:
    char type() const {
        size_t first = lines_[at_].find_first_not_of(" \t");
        if (first == std::string::npos || lines_[at_][first] != '@') return ' ';
        char c = lines_[at_].c_str()[first + 1];
        return std::string("{|}#").find(c) != std::string::npos ? c : ' ';
    }

    std::string operand() const {
        size_t first = lines_[at_].find('@') + 2;
        std::string text = support::expanded(lines_[at_].substr(std::min(
            lines_[at_].find_first_not_of(" \t", first), lines_[at_].size())));
        return text.substr(0, text.find_last_not_of(" \t\n\v\f\r") + 1);
    }

    // Copies up to a label or an esac.
    void copy(std::string *text, bool is_selected, int depth) {
        for (; at_ < lines_.size(); ++at_) {
            if (type() == '|' || type() == '}') return;
            if (type() == '{') {
                copy_case(text, is_selected, depth + 1);
            } else if (type() == ' ' && is_selected) {
                int tabs = 0;
                while (tabs < depth && lines_[at_][tabs] == '\t')
                    ++tabs;
                *text += support::expanded(lines_[at_].substr(tabs)) + "\n";
            }
        }
    }

    void copy_case(std::string *text, bool is_selected, int depth) {
        std::string subject = operand();
        ++at_;
        for (bool found = !is_selected; type() != '}';) {
            bool is_match = !found && matches(subject, operand());
            found = found || is_match;
            ++at_;
            copy(text, is_match, depth);
        }
    }

    static bool matches(const std::string &subject,
                        const std::string &patterns) {
        std::istringstream words(patterns);
        for (std::string pattern; words >> pattern;) {
            if (fmatch(subject.c_str(), pattern.c_str())) return true;
        }
        return false;
    }

    std::vector<std::string> lines_;
    size_t at_ = 0;
};

class random_file {
  public:
    explicit random_file(unsigned seed) : random_(seed) {
    }

    std::string content() {
        content_.clear();
        lines(4);
        return content_;
    }

  private:
    size_t pick(size_t n) {
        return random_() % n;
    }

    const char *one_of(const std::vector<const char *> &all) {
        return all[pick(all.size())];
    }

    void lines(int deepest) {
        for (size_t n = pick(5); n > 0; --n) {
            content_ += one_of({"", "", "\t", "\t\t", "\t\t\t", " "});
            size_t kind = pick(5);
            if (kind == 0 && deepest > 0)
                a_case(deepest - 1);
            else if (kind == 1)
                content_ += "@# dropped\n";
            else
                content_ += one_of({"text\n", "@A@ and @U:b@\n", "\n",
                                    "@SYS@@@\n", "\t~ x @ y\n"});
        }
    }

    void a_case(int deepest) {
        content_ += std::string("@{ ") +
                    one_of({"@SYS@", "a", "ab", "@U@", "@A=value@"}) + "\n";
        for (size_t n = 1 + pick(3); n > 0; --n) {
            content_ += one_of({"", " ", "\t"});
            content_ += std::string("@|") +
                        one_of({" linux", " a*", "b a", " *", " @A?@", " sun",
                                " [a-c]b\tx"}) +
                        "\n";
            lines(deepest);
        }
        content_ += "\t@}\n";
    }

    std::mt19937 random_;
    std::string content_;
};

TEST_F(sfixfile_test, random_files_are_fixed_as_the_plain_model_says) {
    random_file files(17);
    for (int round = 0; round < 400; ++round) {
        std::string content = files.content();
        slow_model model(content);
        support::write_file("in", content);
        setsfwrite(collect);
        written.clear();
        ASSERT_EQ(sfixfile("in", 0), 0) << content;
        ASSERT_EQ(written, model.fixed()) << content;
    }
}

}  // namespace
