// split_test.cc: a command line to words.
#include "support/child.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/private_split.h>
#include <algorithm>
#include <string>
#include <vector>

namespace {

const std::string shell = "needs a shell";

// The words of a line, each in angle brackets, or that it needs a shell.
std::string split(const std::string &line) {
    dyp words = {};
    dypnew(&words, 10);
    std::vector<char> copy(line.c_str(), line.c_str() + line.size() + 1);
    bool done = tovan::split_line(copy.data(), &words);
    std::string result;
    for (int i = 0; i < words.count; i++) {
        result += "<" + std::string(static_cast<char *>(words.array[i])) + ">";
    }
    free(words.array);
    return done ? result : shell;
}

struct row {
    const char *line;
    std::string words;
};

template <size_t count>
void expect_rows(const row (&rows)[count]) {
    for (const row &one : rows) {
        EXPECT_EQ(split(one.line), one.words) << "line: " << one.line;
    }
}

TEST(split_line, words_end_at_blanks_and_tabs) {
    expect_rows({{"", ""},
                 {"  \t ", ""},
                 {"ls -l", "<ls><-l>"},
                 {"ls\t\t -l  ", "<ls><-l>"},
                 {"  a", "<a>"},
                 {"a\rb\fc\vd", "<a\rb\fc\vd>"},
                 {"\001\177", "<\001\177>"}});
}

TEST(split_line, every_character_between_in_and_inside_quotes) {
    const std::string shell_outside = "&()*;<>?[]^|";
    for (int c = 1; c < 256; c++) {
        if (strchr(" \t\n\"'\\=", c) != nullptr) continue;
        std::string one(1, static_cast<char>(c));
        bool expands = c == '$' || c == '`';
        bool special = expands || shell_outside.find(one) != std::string::npos;
        EXPECT_EQ(split(one), special ? shell : "<" + one + ">") << c;
        EXPECT_EQ(split("x" + one), special ? shell : "<x" + one + ">") << c;
        EXPECT_EQ(split("\"" + one + "\""), expands ? shell : "<" + one + ">")
            << c;
        EXPECT_EQ(split("'" + one + "'"), "<" + one + ">") << c;
        EXPECT_EQ(split("\\" + one), "<" + one + ">") << c;
    }
}

TEST(split_line, single_quotes_keep_everything) {
    expect_rows({{"echo 'a b'", "<echo><a b>"},
                 {"''", "<>"},
                 {"a'b'c", "<abc>"},
                 {"'a'\"b\"c", "<abc>"},
                 {"'$`*\\\"\n='", "<$`*\\\"\n=>"},
                 {"'a' b", "<a><b>"},
                 {"'\\'", "<\\>"}});
}

TEST(split_line, double_quotes_expand) {
    expect_rows({{"\"a b\"", "<a b>"},
                 {"\"\"", "<>"},
                 {"\"\" \"\"", "<><>"},
                 {"a\"b\"c", "<abc>"},
                 {"\"it's\"", "<it's>"},
                 {"\"a\tb\nc\"", "<a\tb\nc>"},
                 {"\"$x\"", shell},
                 {"\"`x`\"", shell}});
}

TEST(split_line, a_backslash_in_double_quotes_escapes_four) {
    expect_rows({{"\"\\$x\"", "<$x>"},
                 {"\"\\`\"", "<`>"},
                 {"\"\\\"\"", "<\">"},
                 {"\"\\\\\"", "<\\>"},
                 {"\"\\a\"", "<\\a>"},
                 {"\"\\'\"", "<\\'>"},
                 {"\"\\*\"", "<\\*>"},
                 {"\"a\\\nb\"", "<ab>"},
                 {"\"\\", "<>"}});
}

TEST(split_line, a_backslash_outside_escapes_anything) {
    expect_rows({{"\\a", "<a>"},
                 {"a\\ b", "<a b>"},
                 {"\\$x\\;", "<$x;>"},
                 {"\\\"", "<\">"},
                 {"\\'a b\\'", "<'a><b'>"},
                 {"a \\\nb", "<a><b>"},
                 {"a\\\nb", "<ab>"},
                 {"\\\n", ""},
                 {"\\\na", "<a>"},
                 {"a \\", "<a>"},
                 {"\\", ""},
                 {"a\\", "<a>"}});
}

TEST(split_line, an_unclosed_quote_ends_with_the_line) {
    expect_rows({{"echo 'a b", "<echo><a b>"},
                 {"echo \"a b", "<echo><a b>"},
                 {"'", "<>"},
                 {"\"", "<>"},
                 {"a'", "<a>"}});
}

TEST(split_line, newlines_may_only_end_the_line) {
    expect_rows({{"a\n", "<a>"},
                 {"a \n", "<a>"},
                 {"a\n \t\n ", "<a>"},
                 {"\n", ""},
                 {"a\nb", shell},
                 {"a \n b", shell},
                 {"a\n\\\n", shell},
                 {"'a'\n", "<a>"}});
}

TEST(split_line, an_assignment_in_front_needs_a_shell) {
    expect_rows({{"a=b", shell},
                 {"a=b c", shell},
                 {"=", shell},
                 {"pa =b", shell},
                 {"\"a=b\"", shell},
                 {"\"a\\=b\"", shell},
                 {"'a'=b", shell},
                 {"'a=b'", "<a=b>"},
                 {"a\\=b", "<a=b>"},
                 {"a b=c", "<a><b=c>"},
                 {"a b =", "<a><b><=>"},
                 {"a \"b=c\"", "<a><b=c>"},
                 {"\"\" a=b", "<><a=b>"},
                 {"'a=b' c=d", "<a=b><c=d>"}});
}

TEST(split_line, a_line_of_100_000_words) {
    std::string line;
    std::string words;
    for (int i = 0; i < 100000; i++) {
        std::string word = "w" + std::to_string(i);
        line += word + " ";
        words += "<" + word + ">";
    }
    EXPECT_TRUE(split(line) == words);
}

// Every line of up to five characters of the alphabet.
std::vector<std::string> all_lines(const std::string &alphabet, int length) {
    std::vector<std::string> lines{""};
    for (size_t first = 0, round = 0; round < static_cast<size_t>(length);
         round++) {
        size_t end = lines.size();
        for (; first < end; first++) {
            for (char c : alphabet)
                lines.push_back(lines[first] + c);
        }
    }
    return lines;
}

bool ends_in_backslash(const std::string &line) {
    size_t kept = line.find_last_not_of('\\');
    size_t count = line.size() - (kept == std::string::npos ? 0 : kept + 1);
    return count % 2 == 1;
}

std::string quoted(const std::string &text) {
    std::string result = "'";
    for (char c : text)
        result += c == '\'' ? "'\\''" : std::string(1, c);
    return result + "'";
}

// A real shell reads the same lines; what it finds no end to is left out.
TEST(split_line, agrees_with_a_shell_on_all_short_lines) {
    std::string script = "w() { printf '<%s>' \"$@\"; }\n";
    std::string expected;
    int compared = 0;
    for (const std::string &line : all_lines("a \"'\\\n", 4)) {
        std::string words = split("w " + line);
        if (words == shell || ends_in_backslash(line)) continue;
        bool closed = std::count(line.begin(), line.end(), '"') % 2 == 0 &&
                      std::count(line.begin(), line.end(), '\'') % 2 == 0;
        bool plain = line.find_first_of("\\\"'") == std::string::npos;
        if (!plain && !closed) continue;
        script += "o=$(eval " + quoted("w " + line) +
                  " 2>/dev/null) || o=syntax; printf '%s\\n.\\n' \"$o\"\n";
        std::string without_name = words.substr(strlen("<w>"));
        if (without_name.empty()) without_name = "<>";
        expected += without_name + "\n.\n";
        compared++;
    }
    support::outcome end = support::run_program({"sh"}, script);
    ASSERT_GT(compared, 300);
    size_t at = 0;
    while (at < expected.size()) {
        size_t next = expected.find("\n.\n", at);
        std::string ours = expected.substr(at, next - at);
        size_t stop = end.out.find("\n.\n");
        std::string theirs = end.out.substr(0, stop);
        if (theirs == "syntax") theirs = ours;
        EXPECT_EQ(ours, theirs);
        end.out.erase(0, stop + 3);
        at = next + 3;
    }
}

}  // namespace
