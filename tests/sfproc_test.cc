// sfproc_test.cc: references and what stands for them.
#include "support/child.h"
#include "support/dictionary.h"
#include "support/doc.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <tovan/sfdict.h>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using support::expanded;
using support::fault_of;

struct row {
    std::string text;
    std::string result;
};

class sf_proc_test : public support::dictionary_test {
  protected:
    void SetUp() override {
        dictionary_test::SetUp();
        define("A", "value");
        define("E", "");
        define("W", " one two\tthree  four ");
        define("P", "/bin:/usr/bin: /opt::");
        define("Q", "a \"quoted\" \\ text\twith\ntwo lines");
    }

    static void define(const std::string &name, const std::string &value) {
        sf_dictext(name.c_str(), value.c_str(), "test", 1, 0);
    }

    static void expect_rows(const std::vector<row> &rows) {
        for (const row &each : rows)
            EXPECT_EQ(expanded(each.text), each.result) << each.text;
    }

    // Each text is reported with what is wrong, and comes out as it is.
    static void expect_faults(const std::vector<row> &rows) {
        for (const row &each : rows) {
            EXPECT_EQ(fault_of(each.text), each.result + "\n") << each.text;
            EXPECT_EQ(expanded(each.text), each.text);
        }
    }
};

TEST_F(sf_proc_test, text_without_references_is_copied) {
    expect_rows({{"", ""},
                 {"plain text", "plain text"},
                 {"\\ and % and #", "\\ and % and #"}});
}

TEST_F(sf_proc_test, two_at_signs_are_one) {
    expect_rows({{"@@", "@"},
                 {"@@@@", "@@"},
                 {"a@@b", "a@b"},
                 {"@@A@@", "@A@"},
                 {"@@@A@", "@value"}});
}

TEST_F(sf_proc_test, at_sign_before_anything_but_a_name_is_copied) {
    expect_rows({{"@", "@"},
                 {"a@1b", "a@1b"},
                 {"a@ b@", "a@ b@"},
                 {"@%s@", "@%s@"},
                 {"@\\@A@", "@\\value"},
                 {"@\xe9@", "@\xe9@"}});
}

TEST_F(sf_proc_test, names_are_letters_digits_and_underbars) {
    define("_x1", "underbar");
    define("a_B_9", "mixed");
    expect_rows({{"@_x1@", "underbar"}, {"@a_B_9@", "mixed"}});
}

TEST_F(sf_proc_test, plain_reference_is_the_value) {
    expect_rows({{"@A@", "value"},
                 {"@E@", ""},
                 {"@U@", ""},
                 {"<@A@><@A@>", "<value><value>"},
                 {"@A@A@", "valueA@"}});
}

TEST_F(sf_proc_test, colon_gives_the_text_for_unset_names) {
    expect_rows({{"@A:other@", "value"},
                 {"@E:other@", "other"},
                 {"@U:other@", "other"},
                 {"@U:@", ""}});
}

TEST_F(sf_proc_test, plus_gives_the_text_for_set_names) {
    expect_rows({{"@A+text@", "text"}, {"@E+text@", ""}, {"@U+text@", ""}});
}

TEST_F(sf_proc_test, minus_gives_the_text_for_unset_names) {
    expect_rows({{"@A-text@", ""}, {"@E-text@", "text"}, {"@U-text@", "text"}});
}

TEST_F(sf_proc_test, question_mark_tells_whether_a_name_is_set) {
    expect_rows({{"@A?@", "1"}, {"@E?@", "0"}, {"@U?@", "0"}});
}

TEST_F(sf_proc_test, equal_sign_compares) {
    expect_rows({{"@A=value@", "1"},
                 {"@A=valu@", "0"},
                 {"@A=values@", "0"},
                 {"@A=@", "0"},
                 {"@E=@", "1"},
                 {"@U=@", "1"}});
}

TEST_F(sf_proc_test, bar_puts_words_on_lines) {
    define("L", "a b  c");
    expect_rows({{"@L|@", "a\n\t\tb\n\t\tc"},
                 {"@L|x y@", "a\n\t\tb\n\t\tc"},
                 {"@E|x y@", "x\n\t\ty"},
                 {"@U|x   y@", "x\n\t\ty"},
                 {"@U|@", ""}});
}

TEST_F(sf_proc_test, bar_separates_at_blanks_only_and_at_the_ends) {
    expect_rows({{"@W|@", "\n\t\tone\n\t\ttwo\tthree\n\t\tfour\n\t\t"},
                 {"@U| @", "\n\t\t"},
                 {"@U|:a:b@", ":a:b"}});
}

TEST_F(sf_proc_test, backslash_underbar_ends_lines_with_the_split_character) {
    define("L", "a b  c");
    expect_rows({{"@L\\_@", "a \\\n\t\tb \\\n\t\tc"},
                 {"@U\\_x y@", "x \\\n\t\ty"},
                 {"@U\\_ x@", " \\\n\t\tx"}});
    sf_splitchar = '+';
    expect_rows(
        {{"@L\\_@", "a +\n\t\tb +\n\t\tc"}, {"@L|@", "a\n\t\tb\n\t\tc"}});
    sf_splitchar = '\0';
    expect_rows({{"@L\\_@", "a \n\t\tb \n\t\tc"}});
}

TEST_F(sf_proc_test, backslash_colon_splits_paths) {
    expect_rows({{"@P\\:@", "/bin:\\\n\t\t/usr/bin:\\\n\t\t/opt:\\\n\t\t"},
                 {"@U\\:: a@", ":\\\n\t\ta"},
                 {"@U\\:a\tb@", "a\tb"}});
    sf_splitchar = '\0';
    expect_rows({{"@U\\:a:b@", "a:\n\t\tb"}});
}

TEST_F(sf_proc_test, hash_forms_write_a_line_for_each_word) {
    define("L", " A\tB\nC ");
    expect_rows({
        {"@L#d@", "\n#define\tA\t1\n#define\tB\t1\n#define\tC\t1"},
        {"@L#u@", "\n#undef\tA\n#undef\tB\n#undef\tC"},
        {"@L#s@", "\nset\tA\t1\nset\tB\t1\nset\tC\t1"},
        {"@L#:@", "A:B:C"},
        {"@E#d@", ""},
        {"@U#:@", ""},
    });
}

TEST_F(sf_proc_test, hash_i_includes_the_value_or_the_text) {
    define("H", "sys/types.h ");
    expect_rows({{"@H#ix.h@", "\n#include\t<sys/types.h >"},
                 {"@E#ix.h \t@", "\n#include\t<x.h>"},
                 {"@U#i x.h@", "\n#include\t< x.h>"},
                 {"@U#i@", ""},
                 {"@U#i \t\v\f\r\n@", ""}});
}

TEST_F(sf_proc_test, backslashes_in_arguments_escape_at_signs_and_themselves) {
    expect_rows({{"@U:a\\@b@", "a@b"},
                 {"@U:\\@@", "@"},
                 {"@U:\\\\@", "\\"},
                 {"@U:\\n@", "\\n"},
                 {"@U:\\\\n\\x\\@@", "\\n\\x@"},
                 {"@U:a\\\\\\@b@", "a\\@b"},
                 {"@A=val\\ue@", "0"}});
}

TEST_F(sf_proc_test, references_in_arguments_are_texts) {
    expect_rows({{"@U:\\@A\\@@", "@A@"}, {"@U:x@A@", "xA@"}});
}

TEST_F(sf_proc_test, percent_s_quotes_the_chosen_text) {
    std::string quoted = "a \\\"quoted\\\" \\\\ text\\twith\\ntwo lines";
    expect_rows({{"@Q%s@", quoted},
                 {"@Q%s:x@", quoted},
                 {"@U%s:\"\t@", "\\\"\\t"},
                 {"@A%s+\"@", "\\\""},
                 {"@U%s-\\\\@", "\\\\"},
                 {"@A%s?@", "1"},
                 {"@A%s=value@", "1"}});
}

TEST_F(sf_proc_test, percent_s_means_nothing_to_the_other_forms) {
    define("L", "\"a\" b");
    expect_rows({{"@L%s|@", "\"a\"\n\t\tb"},
                 {"@L%s\\_@", "\"a\" \\\n\t\tb"},
                 {"@L%s#:@", "\"a\":b"},
                 {"@L%s#u@", "\n#undef\t\"a\"\n#undef\tb"}});
}

TEST_F(sf_proc_test, missing_at_sign_behind_a_name) {
    expect_faults({
        {"@FOO", "text:7: missing terminating '@' in 'FOO'"},
        {"x @A%s", "text:7: missing terminating '@' in 'A%s'"},
    });
}

TEST_F(sf_proc_test, missing_at_sign_behind_an_argument) {
    expect_faults({
        {"@A:text", "text:7: missing terminating '@' in 'A:text'"},
        {"@A+", "text:7: missing terminating '@' in 'A+'"},
        {"@A-\\@", "text:7: missing terminating '@' in 'A-\\@'"},
        {"@A=\\", "text:7: missing terminating '@' in 'A=\\'"},
        {"@A|x", "text:7: missing terminating '@' in 'A|x'"},
        {"@A\\_", "text:7: missing terminating '@' in 'A\\_'"},
        {"@A\\:x", "text:7: missing terminating '@' in 'A\\:x'"},
        {"@A#ix", "text:7: missing terminating '@' in 'A#ix'"},
    });
}

TEST_F(sf_proc_test, at_sign_must_follow_operators_without_argument) {
    expect_faults({
        {"@A?", "text:7: terminating '@' missing in 'A?'"},
        {"@A?x@", "text:7: terminating '@' missing in 'A?x@'"},
        {"@A#d", "text:7: terminating '@' missing in 'A#d'"},
        {"@A#uu@", "text:7: terminating '@' missing in 'A#uu@'"},
        {"@A#s @", "text:7: terminating '@' missing in 'A#s @'"},
        {"@A#:x@", "text:7: terminating '@' missing in 'A#:x@'"},
    });
}

TEST_F(sf_proc_test, unsupported_operators) {
    expect_faults({
        {"@A @", "text:7: unsupported @ operator in 'A @'"},
        {"@A.x@", "text:7: unsupported @ operator in 'A.x@'"},
        {"@A%s!@", "text:7: unsupported @ operator in 'A%s!@'"},
        {"@A%d@", "text:7: unsupported % operator in 'A%d@'"},
        {"@A%", "text:7: unsupported % operator in 'A%'"},
        {"@A#x@", "text:7: unsupported @V#?@ operator in 'A#x@'"},
        {"@A#", "text:7: unsupported @V#?@ operator in 'A#'"},
        {"@A\\x@", "text:7: unsupported @V\\?@ operator in 'A\\x@'"},
        {"@A\\", "text:7: unsupported @V\\?@ operator in 'A\\'"},
    });
}

TEST_F(sf_proc_test, text_goes_on_right_behind_the_wrong_at_sign) {
    EXPECT_EQ(expanded("@U @A@ x"), "@U value x");
    EXPECT_EQ(fault_of("@U @A@ x"),
              "text:7: unsupported @ operator in 'U @A@ x'\n");
    EXPECT_EQ(expanded("@A?x@A@"), "@A?xvalue");
    EXPECT_EQ(expanded("@A!@@B"), "@A!@B");
}

TEST_F(sf_proc_test, every_wrong_reference_is_reported) {
    EXPECT_EQ(fault_of("@A! @A? @A"),
              "text:7: unsupported @ operator in 'A! @A? @A'\n"
              "text:7: terminating '@' missing in 'A? @A'\n"
              "text:7: missing terminating '@' in 'A'\n");
}

TEST_F(sf_proc_test, error_flag_is_set_and_cleared) {
    dy output{};
    int had_error = 7;
    support::stderr_of(
        [&] { sf_proc("@A! @A@", &output, 1, &had_error, "f", 1); });
    EXPECT_EQ(had_error, 1);
    sf_proc("@A@", &output, 1, &had_error, "f", 1);
    EXPECT_EQ(had_error, 0);
    EXPECT_STREQ(sf_proc("@A@", &output, 1, nullptr, "f", 1), "value");
    free(output.buffer);
}

TEST_F(sf_proc_test, reset_empties_the_output) {
    dy output{};
    int had_error;
    EXPECT_STREQ(sf_proc("a", &output, 0, &had_error, "f", 1), "a");
    EXPECT_STREQ(sf_proc("@A@", &output, 0, &had_error, "f", 1), "avalue");
    EXPECT_EQ(output.length, 6);
    EXPECT_STREQ(sf_proc("@A@", &output, 1, &had_error, "f", 1), "value");
    EXPECT_EQ(sf_proc("", &output, 1, &had_error, "f", 1), output.buffer);
    EXPECT_EQ(output.length, 0);
    free(output.buffer);
}

TEST_F(sf_proc_test, notset_is_special_only_at_the_end) {
    define("NotSet", "ordinary");
    expect_rows({{"@NotSet", "@NotSet"},
                 {"x@NotSet", "x@NotSet"},
                 {"@NotSet@", "ordinary"},
                 {"x@NotSet@", "xordinary"},
                 {"@NotSet:a@", "ordinary"}});
    EXPECT_EQ(fault_of("x@NotSet"), "");
    expect_faults({
        {"@NotSets", "text:7: missing terminating '@' in 'NotSets'"},
        {"@NotSet ", "text:7: unsupported @ operator in 'NotSet '"},
    });
}

TEST_F(sf_proc_test, undefined_names_have_the_text_that_was_set_for_them) {
    sf_setnotset("nothing here");
    expect_rows({{"@U@", "nothing here"},
                 {"@U?@", "1"},
                 {"@U:x@", "nothing here"},
                 {"@U#:@", "nothing:here"},
                 {"@E@", ""}});
    sf_setnotset(nullptr);
    expect_rows({{"@U@", ""}, {"@U:x@", "x"}});
}

TEST_F(sf_proc_test, trace_lists_names_that_parsed) {
    sf_uflag = 1;
    std::string traced = support::stdout_of([] {
        support::stderr_of([] { expanded("@A@ @@ @U:x@ @A! @NotSet"); });
    });
    EXPECT_EQ(traced, "text:000007:A\ntext:000007:U\n");
    sf_uflag = 2;
    EXPECT_EQ(support::stdout_of([] { expanded("@A@"); }), "");
}

TEST_F(sf_proc_test, trace_has_long_line_numbers_whole) {
    sf_uflag = 1;
    dy output{};
    EXPECT_EQ(support::stdout_of(
                  [&] { sf_proc("@A@", &output, 1, nullptr, "f", 12345678); }),
              "f:12345678:A\n");
    free(output.buffer);
}

// The second column of the document's examples: \n and \t are characters.
std::string unescaped(const std::string &text) {
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        std::string two = text.substr(i, 2);
        if (two == "\\n" || two == "\\t") {
            result += two == "\\n" ? '\n' : '\t';
            ++i;
        } else {
            result += text[i];
        }
    }
    return result;
}

TEST_F(sf_proc_test, documented_references) {
    define("L", "one two");
    define("P", "/bin:/usr/bin");
    define("Q", "a \"b\"");
    std::istringstream rows(
        support::doc_block("formats/dictionary.md", "references"));
    int count = 0;
    for (std::string row; std::getline(rows, row); ++count) {
        size_t end = row.find("  ");
        size_t start = row.find_first_not_of(' ', end);
        EXPECT_EQ(expanded(row.substr(0, end)), unescaped(row.substr(start)))
            << row;
    }
    EXPECT_GT(count, 20);
}

// The plain model: one character after the other, on strings.
class slow_model {
  public:
    explicit slow_model(const std::map<std::string, std::string> *values)
        : values_(values) {
    }

    std::string expand(const std::string &text) {
        std::string result;
        for (size_t i = 0; i < text.size();) {
            if (text[i] != '@') {
                result += text[i++];
                continue;
            }
            size_t after = i + 1;
            std::string written = "@";
            if (after < text.size() && text[after] == '@')
                ++after;
            else if (is_name(text, after) && !digit(text[after]))
                reference(text, &after, &written);
            result += written;
            i = after;
        }
        return result;
    }

    bool had_error = false;

  private:
    static bool digit(char c) {
        return c >= '0' && c <= '9';
    }

    static bool is_name(const std::string &text, size_t at) {
        if (at >= text.size()) return false;
        char c = text[at];
        return digit(c) || c == '_' || (c >= 'a' && c <= 'z') ||
               (c >= 'A' && c <= 'Z');
    }

    static std::vector<std::string> words(const std::string &text) {
        std::vector<std::string> all;
        std::string word;
        for (char c : text + " ") {
            if (c != ' ' && c != '\t' && c != '\n') {
                word += c;
            } else if (!word.empty()) {
                all.push_back(word);
                word.clear();
            }
        }
        return all;
    }

    static std::string split(const std::string &text, const std::string &at,
                             const std::string &between) {
        std::string result;
        bool in_run = false;
        for (char c : text) {
            bool separates = at.find(c) != std::string::npos;
            if (!separates) result += c;
            if (separates && !in_run) result += between;
            in_run = separates;
        }
        return result;
    }

    static std::string quoted(const std::string &text) {
        std::string result;
        for (char c : text) {
            if (c == '\t')
                result += "\\t";
            else if (c == '\n')
                result += "\\n";
            else
                result +=
                    (c == '"' || c == '\\' ? "\\" : "") + std::string(1, c);
        }
        return result;
    }

    // Whether an argument and its end follow.
    static bool argument(const std::string &text, size_t *at,
                         std::string *result) {
        for (size_t i = *at; i < text.size(); ++i) {
            char next = i + 1 < text.size() ? text[i + 1] : '\0';
            if (text[i] == '@') {
                *at = i + 1;
                return true;
            }
            if (text[i] == '\\' && (next == '@' || next == '\\')) ++i;
            *result += text[i];
        }
        return false;
    }

    void reference(const std::string &text, size_t *after,
                   std::string *written) {
        size_t i = *after;
        while (is_name(text, i))
            ++i;
        std::string name = text.substr(*after, i - *after);
        if (name == "NotSet" && i == text.size()) return;
        auto found = values_->find(name);
        std::string value = found != values_->end() ? found->second : "";
        bool is_quoted = text.substr(i, 2) == "%s";
        if (is_quoted) i += 2;
        std::string form = text.substr(i, 1);
        if (form == "#" || form == "\\") form = text.substr(i, 2);
        i += form.size();
        bool has_argument = takes_argument(form);
        std::string given;
        bool is_right =
            has_argument ? argument(text, &i, &given) : ends(text, form, &i);
        if (!is_right || !is_known(form)) {
            had_error = true;
            return;
        }
        *written = result_of(form, value, given, is_quoted);
        *after = i;
    }

    static bool takes_argument(const std::string &form) {
        return form.size() == 1
                   ? std::string(":+-=|").find(form) != std::string::npos
                   : form == "\\_" || form == "\\:" || form == "#i";
    }

    static bool is_known(const std::string &form) {
        return takes_argument(form) || form == "@" || form == "?" ||
               form == "#d" || form == "#u" || form == "#s" || form == "#:";
    }

    static bool ends(const std::string &text, const std::string &form,
                     size_t *at) {
        if (form == "@") return true;
        return *at < text.size() && text[(*at)++] == '@';
    }

    static std::string result_of(const std::string &form,
                                 const std::string &value,
                                 const std::string &given, bool is_quoted) {
        bool is_set = !value.empty();
        const std::string &either = is_set ? value : given;
        if (form == "|") return split(either, " ", "\n\t\t");
        if (form == "\\_") return split(either, " ", " \\\n\t\t");
        if (form == "\\:") return split(either, " :", ":\\\n\t\t");
        if (form == "#i") {
            size_t end = given.find_last_not_of(" \t\n\v\f\r");
            std::string file = is_set ? value : given.substr(0, end + 1);
            return file.empty() ? "" : "\n#include\t<" + file + ">";
        }
        if (form[0] == '#') return lines(form[1], words(value));
        std::string text = value;
        if (form == ":") text = either;
        if (form == "+") text = is_set ? given : "";
        if (form == "-") text = is_set ? "" : given;
        if (form == "?") text = is_set ? "1" : "0";
        if (form == "=") text = value == given ? "1" : "0";
        return is_quoted ? quoted(text) : text;
    }

    static std::string lines(char form, const std::vector<std::string> &all) {
        std::string result;
        for (const std::string &word : all) {
            if (form == 'd') result += "\n#define\t" + word + "\t1";
            if (form == 'u') result += "\n#undef\t" + word;
            if (form == 's') result += "\nset\t" + word + "\t1";
            if (form == ':') result += (result.empty() ? "" : ":") + word;
        }
        return result;
    }

    const std::map<std::string, std::string> *values_;
};

std::string random_text(std::mt19937 *random, size_t longest) {
    static const std::vector<std::string> pieces = {
        "@", "@",  "@",   "@",     "A",   "B",     "C_1", "NotSet", "%s",
        ":", "+",  "-",   "=",     "?",   "|",     "\\",  "_",      "#",
        "d", "u",  "s",   "i",     "x y", " ",     "\t",  "\n",     "\"",
        "1", "@A", "@B:", "@C_1#", "\\@", "@B\\_", "\v"};
    std::string text;
    for (size_t n = (*random)() % longest; n > 0; --n)
        text += pieces[(*random)() % pieces.size()];
    return text;
}

TEST_F(sf_proc_test, random_texts_expand_as_the_plain_model_says) {
    std::mt19937 random(20);
    std::map<std::string, std::string> values;
    slow_model model(&values);
    for (int round = 0; round < 25000; ++round) {
        if (round % 20 == 0) {
            for (const char *name : {"A", "B", "C_1", "NotSet"}) {
                std::string value = model.expand(random_text(&random, 8));
                std::string doubled;
                for (char c : value)
                    doubled += std::string(c == '@' ? 2 : 1, c);
                values[name] = value;
                if (value == "@NotSet") values.erase(name);
                define(name, doubled);
            }
        }
        std::string text = random_text(&random, 14);
        dy output{};
        int had_error = -1;
        model.had_error = false;
        std::string expected = model.expand(text);
        std::string faults = model.had_error ? "" : "none";
        auto run = [&] {
            sf_proc(text.c_str(), &output, 1, &had_error, "t", 1);
        };
        if (model.had_error)
            faults = support::stderr_of(run);
        else
            run();
        ASSERT_EQ(output.buffer, expected) << text;
        ASSERT_EQ(had_error, model.had_error) << text;
        ASSERT_FALSE(faults.empty()) << text;
        free(output.buffer);
    }
}

TEST_F(sf_proc_test, text_of_100_megabytes_is_a_text) {
    std::string piece = "text @A@ and @U:\\@other\\@@ @W#:@";
    std::string result = "text value and @other@ one:two:three:four";
    std::string text;
    std::string expected;
    while (text.size() < 100000000) {
        text += piece;
        expected += result;
    }
    EXPECT_TRUE(expanded(text) == expected);
}

TEST_F(sf_proc_test, argument_of_100_megabytes_is_an_argument) {
    std::string argument;
    std::string result;
    while (argument.size() < 100000000) {
        argument += "\\@ \\\\x";
        result += "@ \\x";
    }
    EXPECT_TRUE(expanded("@U:" + argument + "@") == result);
    EXPECT_TRUE(expanded("@A=" + argument + "@") == "0");
}

}  // namespace
