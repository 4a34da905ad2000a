// sfdict_test.cc: dictionary files and operations on names.
#include "support/child.h"
#include "support/crowd.h"
#include "support/dictionary.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <tovan/errexit.h>
#include <tovan/sfdict.h>
#include <unistd.h>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using support::place_of;
using support::read_dictionary;
using support::value_of;

const std::string undefined = "(undefined)";

struct row {
    std::string content;
    std::string value;  // of A, after the content was read
};

class sfdict_test : public support::dictionary_test {
  protected:
    static void expect_rows(const std::vector<row> &rows) {
        for (const row &each : rows) {
            support::empty_dictionary();
            EXPECT_EQ(read_dictionary(each.content), "") << each.content;
            EXPECT_EQ(value_of("A"), each.value) << each.content;
        }
    }
};

TEST_F(sfdict_test, lines_define_names) {
    expect_rows({{"A value\n", "value"},
                 {"A\tvalue of several words", "value of several words"},
                 {" \t A \t value \t \n", "value"},
                 {"A\n", ""},
                 {"A\r\n", ""},
                 {"A value\r\n", "value"},
                 {"B x\n", undefined},
                 {"", undefined},
                 {"_ x\n\n\nA y\n", "y"}});
}

TEST_F(sfdict_test, comments_are_passed_over) {
    expect_rows({{"# A no\n  \t# A no\n", undefined},
                 {"A yes # no\n", "yes"},
                 {"A #no\n", ""},
                 {"A yes#no\\\nB x\n", "yes"},
                 {"#A no\\\nA yes\n", "yes"}});
}

TEST_F(sfdict_test, backslashes_escape_comments_and_themselves) {
    expect_rows({{"A a\\#b\n", "a#b"},
                 {"A a\\\\b\n", "a\\b"},
                 {"A a\\\\#b\n", "a\\"},
                 {"A a\\\\\\#b\n", "a\\#b"},
                 {"A a\\nb\\@\n", "a\\nb\\@"},
                 {"A a\\ \n", "a\\"}});
}

TEST_F(sfdict_test, backslash_at_the_end_joins_the_next_line) {
    expect_rows({{"A a\\\nb\n", "ab"},
                 {"A a \\\n \t b\n", "a b"},
                 {"A a\\\n\nB x\n", "a"},
                 {"A a\\\r\nb\n", "ab"},
                 {"A \\\na \\\nb \\\nc\n", "a b c"},
                 {"A a\\\n# comment\n", "a"},
                 {"A a\\\n\\# text\n", "a# text"},
                 {"A a\\\\\nB x\n", "a\\"},
                 {"\\\nA x\n", "x"},
                 {"A\\\nB x\n", undefined}});
}

TEST_F(sfdict_test, words_of_operations) {
    expect_rows({
        {"set A x\n", "x"},
        {"A x\nset A y\n", "y"},
        {"append A x\n", "x"},
        {"A a\nappend A b\n", "a b"},
        {"A\nappend A b\n", "b"},
        {"A a\nappend A\n", "a "},
        {"cset A x\n", "x"},
        {"A 1\ncset A 2\n", "1"},
        {"A\ncset A 2\n", ""},
        {"A\ncnilset A 2\n", "2"},
        {"A 1\ncnilset A 2\n", "1"},
        {"cnilset A 2\n", "2"},
        {"A\nsetifnil A 2\n", "2"},
        {"A 1\nsetifnil A 2\n", "1"},
        {"setifnil A\n", ""},
        {"A 1\nunset A\n", undefined},
        {"A 1\nunset A ignored\n", undefined},
        {"unset A\n", undefined},
        {"A\nunsetifnil A\n", undefined},
        {"A 1\nunsetifnil A\n", "1"},
    });
}

TEST_F(sfdict_test, undefined_names_are_created) {
    expect_rows({{"unsetifnil A\n", ""},
                 {"unsetifnil A x\n", "x"},
                 {"append A x\n", "x"},
                 {"cnilset A x\n", "x"}});
}

TEST_F(sfdict_test, words_of_operations_can_be_names) {
    EXPECT_EQ(read_dictionary("set set x\nset append y\nappend set z\n"), "");
    EXPECT_EQ(value_of("set"), "x z");
    EXPECT_EQ(value_of("append"), "y");
}

TEST_F(sfdict_test, words_like_operations_are_names) {
    EXPECT_EQ(read_dictionary("sett A\nSET A\nappen A\n"), "");
    EXPECT_EQ(value_of("sett"), "A");
    EXPECT_EQ(value_of("SET"), "A");
    EXPECT_EQ(value_of("appen"), "A");
}

TEST_F(sfdict_test, values_are_expanded) {
    expect_rows({{"B b\nA <@B@>\n", "<b>"},
                 {"A @A:first@\n", "first"},
                 {"A a\nA @A@@A@\n", "aa"},
                 {"A x@@y\n", "x@y"},
                 {"B b\nA a\nappend A @B@\n", "a b"},
                 {"A a\\@\n", "a\\@"}});
}

TEST_F(sfdict_test, whole_value_notset_removes) {
    expect_rows({{"A 1\nA @NotSet\n", undefined},
                 {"A @NotSet\n", undefined},
                 {"A\ncnilset A @NotSet\n", undefined},
                 {"A\nappend A @NotSet\n", undefined},
                 {"A a\nappend A @NotSet\n", "a @NotSet"},
                 {"A 1\ncset A @NotSet\n", "1"},
                 {"A x@NotSet\n", "x@NotSet"},
                 {"A 1\nA @@NotSet\n", undefined},
                 {"NotSet x\nA @NotSet@\n", "x"}});
}

TEST_F(sfdict_test, wrong_references_are_reported_and_kept) {
    support::write_file("dict", "B b\nA @B! @B@\n");
    int status = -1;
    EXPECT_EQ(support::stderr_of([&] { status = sfdict("dict"); }),
              "dict:2: unsupported @ operator in 'B! @B@'\n");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(value_of("A"), "@B! b");
}

TEST_F(sfdict_test, names_start_with_a_letter_or_an_underbar) {
    for (const char *line : {"1A x", "-A x", "set", "append", "set 1",
                             "unset @", "\xe9 x", "\\", "\\ x"}) {
        EXPECT_EQ(
            read_dictionary(line + std::string("\n\n")),
            "test: dict:" + std::string(line == std::string("\\") ? "2" : "1") +
                " 1st character must be alphabetic or an underbar\n")
            << line;
    }
    EXPECT_EQ(support::listing(), "");
}

TEST_F(sfdict_test, names_are_letters_digits_and_underbars) {
    for (const char *line : {"A-B x", "A@ x", "set A. x", "_\xe9"}) {
        EXPECT_EQ(read_dictionary(line),
                  "test: dict:1 illegal character in name\n")
            << line;
    }
    EXPECT_EQ(support::listing(), "");
}

TEST_F(sfdict_test, wrong_lines_are_skipped_and_make_the_result_1) {
    support::write_file("dict", "A 1\n1 x\nB 2\n");
    int status = -1;
    EXPECT_EQ(support::stderr_of([&] { status = sfdict("dict"); }),
              "test: dict:2 1st character must be alphabetic or an underbar\n");
    EXPECT_EQ(status, 1);
    EXPECT_EQ(value_of("A"), "1");
    EXPECT_EQ(value_of("B"), "2");
    support::write_file("dict", "C 3\n");
    EXPECT_EQ(sfdict("dict"), 0);
}

TEST_F(sfdict_test, messages_without_a_program_name) {
    EXPECT_EQ(support::in_child([] {
                  support::write_file("dict", "1\n");
                  progname = nullptr;
                  sfdict("dict");
              }).err,
              "dict:1 1st character must be alphabetic or an underbar\n");
}

TEST_F(sfdict_test, lines_are_counted) {
    EXPECT_EQ(read_dictionary("A 1\n\n# x\nB\\\n\\\n2\nC 3\n"), "");
    EXPECT_EQ(place_of("A"), "dict:1");
    EXPECT_EQ(place_of("B"), undefined);
    EXPECT_EQ(place_of("B2"), "dict:6");
    EXPECT_EQ(place_of("C"), "dict:7");
}

TEST_F(sfdict_test, braces_in_comments_name_places) {
    EXPECT_EQ(read_dictionary("A 1\n"
                              "#{ \t inner file \n"
                              "B 2\n"
                              "#{deeper\n"
                              "C 3\n"
                              "#}\n"
                              "D 4\n"
                              "#} anything\n"
                              "E 5\n"
                              "#}\n"
                              "F 6\n"),
              "");
    EXPECT_EQ(place_of("A"), "dict:1");
    EXPECT_EQ(place_of("B"), "inner file :2");
    EXPECT_EQ(place_of("C"), "deeper:2");
    EXPECT_EQ(place_of("D"), "inner file :4");
    EXPECT_EQ(place_of("E"), "dict:3");
    EXPECT_EQ(place_of("F"), "dict:5");
}

TEST_F(sfdict_test, open_brace_at_the_end_leaves_the_file_under_the_next) {
    EXPECT_EQ(read_dictionary("#{ open\nA 1\n"), "");
    EXPECT_EQ(place_of("A"), "open:2");
    support::write_file("second", "B 1\n#}\nC 2\n");
    sfdict("second");
    EXPECT_EQ(place_of("B"), "second:1");
    EXPECT_EQ(place_of("C"), "dict:2");
}

TEST_F(sfdict_test, closing_brace_leaves_the_file_itself_alone) {
    EXPECT_EQ(read_dictionary("#}\nA 1\n#} x\n1\n"),
              "test: dict:4 1st character must be alphabetic or an underbar\n");
    EXPECT_EQ(place_of("A"), "dict:2");
}

TEST_F(sfdict_test, errors_in_braces_name_the_inner_place) {
    EXPECT_EQ(read_dictionary("#{ inner\n1\nA @A!\n"),
              "test: inner:2 1st character must be alphabetic or an underbar\n"
              "inner:3: unsupported @ operator in 'A!'\n");
}

TEST_F(sfdict_test, end_of_file_behind_a_backslash_is_reported_as_arg) {
    for (const char *content : {"A x\nB y\\\n", "A x\nB y\\", "A x\n\\"}) {
        support::write_file("dict", content);
        int status = -1;
        EXPECT_EQ(support::stderr_of([&] { status = sfdict("dict"); }),
                  "test: -s arg unexpected EOF after \\<newline>\n");
        EXPECT_EQ(status, 1);
        EXPECT_EQ(value_of("A"), "x");
        EXPECT_EQ(value_of("B"), undefined);
    }
}

TEST_F(sfdict_test, unexpected_end_in_braces_leaves_the_file_under_the_next) {
    EXPECT_EQ(read_dictionary("#{ inner\nA x\\"),
              "test: -s arg unexpected EOF after \\<newline>\n");
    EXPECT_EQ(read_dictionary("#}\nB 1\n"), "");
    EXPECT_EQ(place_of("B"), "dict:2");
    EXPECT_EQ(read_dictionary("C 1\n#}\n#}\nD 1\n"), "");
    EXPECT_EQ(place_of("D"), "dict:4");
}

TEST_F(sfdict_test, reading_goes_on_after_an_unexpected_end) {
    EXPECT_NE(read_dictionary("A x\\\n"), "");
    EXPECT_EQ(read_dictionary("A x\n1\n"),
              "test: dict:2 1st character must be alphabetic or an underbar\n");
}

TEST_F(sfdict_test, same_value_keeps_its_place) {
    EXPECT_EQ(read_dictionary("A 1\nA 1\n"), "");
    EXPECT_EQ(place_of("A"), "dict:1");
    EXPECT_EQ(read_dictionary("\nA 2\n"), "");
    EXPECT_EQ(place_of("A"), "dict:2");
    EXPECT_EQ(read_dictionary("\n\n\nappend A\n"), "");
    EXPECT_EQ(place_of("A"), "dict:4");
    EXPECT_EQ(read_dictionary("\n\n\n\n\nB\nappend B\n"), "");
    EXPECT_EQ(place_of("B"), "dict:6");
}

TEST_F(sfdict_test, places_outlive_their_files) {
    for (int i = 0; i < 3; ++i) {
        std::string name = "dict" + std::to_string(i);
        support::write_file(name, "A" + std::to_string(i) + " x\n");
        std::string path = name;
        sfdict(path.c_str());
        path.assign(path.size(), '-');
    }
    EXPECT_EQ(place_of("A0"), "dict0:1");
    EXPECT_EQ(place_of("A2"), "dict2:1");
}

TEST_F(sfdict_test, dictionary_from_standard_input) {
    support::outcome child = support::in_child(
        [] {
            printf("%d\n", sfdict("-"));
            sf_putdict(1);
        },
        "A x\nB y\n");
    EXPECT_EQ(child.out, "0\n-:000001:A\tx\n-:000002:B\ty\n");
    EXPECT_EQ(child.err, "");
}

TEST_F(sfdict_test, standard_input_is_taken_once) {
    EXPECT_FATAL(
        {
            sfdict("-");
            sfdict("-");
        },
        255, "test: cannot use stdin twice\n");
    EXPECT_FATAL(
        {
            sf_openfile("-");
            sf_openfile("-");
        },
        255, "test: cannot use stdin twice\n");
}

TEST_F(sfdict_test, standard_input_stays_open) {
    EXPECT_EQ(support::in_child(
                  [] {
                      sfdict("-");
                      _exit(lseek(0, 0, SEEK_CUR) == 4 ? 3 : 4);
                  },
                  "A x\n")
                  .exit_status,
              3);
}

TEST_F(sfdict_test, file_that_cannot_be_opened_is_fatal) {
    EXPECT_FATAL(sfdict("no/such"), 255, "test: no/such: cannot open\n");
    EXPECT_FATAL(sf_openfile(""), 255, "test: : cannot open\n");
}

TEST_F(sfdict_test, file_that_cannot_be_read_is_fatal) {
    support::make_folders("folder");
    EXPECT_FATAL(sfdict("folder"), 255, "test: folder: Is a directory\n");
}

TEST_F(sfdict_test, opened_file_is_read_from_its_start) {
    support::write_file("file", "text");
    FILE *stream = sf_openfile("file");
    char text[5] = "";
    EXPECT_EQ(fread(text, 1, 5, stream), 4u);
    EXPECT_STREQ(text, "text");
    fclose(stream);
}

TEST_F(sfdict_test, no_descriptor_is_left_open) {
    read_dictionary("A x\n");
    int before = dup(0);
    close(before);
    for (const char *content : {"A x\n", "A\\\n", "1\n", "#{\n"})
        read_dictionary(content);
    int after = dup(0);
    close(after);
    EXPECT_EQ(after, before);
}

// sf_dictext.

constexpr int op_set = 0;
constexpr int op_cset = 1;
constexpr int op_unset = 2;
constexpr int op_cnilset = 3;
constexpr int op_append = 4;
constexpr int op_unsetifnil = 5;

struct operation_row {
    int operation;
    const char *before;  // null: not defined
    const char *value;
    std::string after;
};

class sf_dictext_test : public support::dictionary_test {};

TEST_F(sf_dictext_test, operations_with_and_without_a_value) {
    const operation_row rows[] = {
        {op_set, nullptr, "x", "x"},
        {op_set, "v", "x", "x"},
        {op_set, "v", "", ""},
        {op_set, "v", nullptr, undefined},
        {op_set, nullptr, nullptr, undefined},
        {op_cset, nullptr, "x", "x"},
        {op_cset, nullptr, nullptr, undefined},
        {op_cset, "v", "x", "v"},
        {op_cset, "v", nullptr, "v"},
        {op_cset, "", nullptr, ""},
        {op_unset, "v", "x", undefined},
        {op_unset, "v", nullptr, undefined},
        {op_unset, nullptr, "x", undefined},
        {op_cnilset, nullptr, "x", "x"},
        {op_cnilset, nullptr, nullptr, undefined},
        {op_cnilset, "", "x", "x"},
        {op_cnilset, "", nullptr, ""},
        {op_cnilset, "v", "x", "v"},
        {op_append, nullptr, "x", "x"},
        {op_append, nullptr, nullptr, undefined},
        {op_append, "v", "x", "v x"},
        {op_append, "v", "", "v "},
        {op_append, "v", nullptr, "v"},
        {op_append, "", "x", "x"},
        {op_append, "", nullptr, ""},
        {op_unsetifnil, nullptr, "x", "x"},
        {op_unsetifnil, nullptr, "", ""},
        {op_unsetifnil, nullptr, nullptr, undefined},
        {op_unsetifnil, "", "x", undefined},
        {op_unsetifnil, "", nullptr, undefined},
        {op_unsetifnil, "v", "x", "v"},
        {op_unsetifnil, "v", nullptr, "v"},
    };
    for (const operation_row &row : rows) {
        support::empty_dictionary();
        if (row.before != nullptr) sf_dictext("A", row.before, "f", 1, op_set);
        sf_dictext("A", row.value, "f", 2, row.operation);
        EXPECT_EQ(value_of("A"), row.after)
            << row.operation << " on " << (row.before ? row.before : "nothing")
            << " with " << (row.value ? row.value : "nothing");
    }
}

TEST_F(sf_dictext_test, value_is_expanded_at_its_place) {
    EXPECT_EQ(support::stderr_of(
                  [] { sf_dictext("A", "x@A", "somewhere", 33, op_set); }),
              "somewhere:33: missing terminating '@' in 'A'\n");
    EXPECT_EQ(value_of("A"), "x@A");
    EXPECT_EQ(place_of("A"), "somewhere:33");
}

TEST_F(sf_dictext_test, removed_names_expand_nothing) {
    EXPECT_EQ(
        support::stderr_of([] { sf_dictext("A", "@A", "f", 1, op_unset); }),
        "");
}

TEST_F(sf_dictext_test, place_is_kept_by_address_and_whole) {
    const char where[] = "place";
    sf_dictext("A", "1", where, 70000, op_set);
    const char *found = nullptr;
    int line = 0;
    EXPECT_STREQ(sf_valvar("A", -1, &found, &line), "1");
    EXPECT_EQ(found, where);
    EXPECT_EQ(line, 70000);
}

TEST_F(sf_dictext_test, own_value_can_be_given) {
    sf_dictext("A", "first", "f", 1, op_set);
    sf_dictext("A", sf_valvar("A", -1, nullptr, nullptr), "f", 2, op_append);
    EXPECT_EQ(value_of("A"), "first first");
    sf_dictext("B", sf_valvar("A", -1, nullptr, nullptr), "f", 3, op_set);
    sf_dictext("A", sf_valvar("A", -1, nullptr, nullptr), "f", 4, op_set);
    EXPECT_EQ(place_of("A"), "f:2");
    EXPECT_EQ(value_of("B"), "first first");
}

TEST_F(sf_dictext_test, names_are_not_checked) {
    for (const char *name : {"", "1", "a b", "@", "\xff"}) {
        sf_dictext(name, "x", "f", 1, op_set);
        EXPECT_EQ(value_of(name), "x") << name;
        sf_dictext(name, nullptr, "f", 1, op_unset);
        EXPECT_EQ(value_of(name), undefined) << name;
    }
}

TEST_F(sf_dictext_test, unknown_operations_set) {
    sf_dictext("A", "1", "f", 1, 99);
    sf_dictext("A", "2", "f", 1, -1);
    EXPECT_EQ(value_of("A"), "2");
}

// sf_valvar and sf_setnotset.

class sf_valvar_test : public support::dictionary_test {};

TEST_F(sf_valvar_test, counted_names_are_compared_by_their_length) {
    sf_dictext("AB", "two", "f", 1, op_set);
    sf_dictext("A", "one", "f", 1, op_set);
    EXPECT_STREQ(sf_valvar("ABC", 2, nullptr, nullptr), "two");
    EXPECT_STREQ(sf_valvar("ABC", 1, nullptr, nullptr), "one");
    EXPECT_STREQ(sf_valvar("ABC", 3, nullptr, nullptr), "");
    EXPECT_STREQ(sf_valvar("ABC", 0, nullptr, nullptr), "");
    EXPECT_STREQ(sf_valvar("AB", -1, nullptr, nullptr), "two");
}

TEST_F(sf_valvar_test, undefined_names_have_no_place) {
    const char *where = "before";
    int line = 9;
    EXPECT_STREQ(sf_valvar("U", -1, &where, &line), "");
    EXPECT_EQ(where, nullptr);
    EXPECT_EQ(line, 0);
}

TEST_F(sf_valvar_test, text_of_undefined_names_can_be_set) {
    const char text[] = "not set";
    sf_setnotset(text);
    EXPECT_EQ(sf_valvar("U", -1, nullptr, nullptr), text);
    sf_setnotset(nullptr);
    EXPECT_EQ(sf_valvar("U", -1, nullptr, nullptr), nullptr);
}

// The plain model: a map, and the rules as they are said.
struct model_term {
    std::string value;
    int line;
};

void apply(std::map<std::string, model_term> *model, const std::string &name,
           const std::string *value, int line, int operation) {
    if (operation == op_set && value == nullptr) operation = op_unset;
    const std::string *text = operation == op_unset ? nullptr : value;
    auto found = model->find(name);
    if (found == model->end()) {
        if (text != nullptr && *text != "@NotSet")
            (*model)[name] = {*text, line};
        return;
    }
    std::string old = found->second.value;
    std::string joined;
    bool removes =
        operation == op_unset || (operation == op_unsetifnil && old.empty());
    if (!removes) {
        if (operation == op_cset || operation == op_unsetifnil) return;
        if (operation == op_cnilset && !old.empty()) return;
        if (text == nullptr) return;
        if (operation == op_append && !old.empty()) {
            joined = old + " " + *text;
            text = &joined;
        }
    }
    if (removes || *text == "@NotSet")
        model->erase(found);
    else if (*text != old)
        found->second = {*text, line};
}

void check_random_operations(const std::vector<std::string> &names,
                             int rounds) {
    support::empty_dictionary();
    std::mt19937 random(35);
    std::map<std::string, model_term> model;
    const char *const values[] = {"", "x", "y z", "@NotSet",
                                  "longer text here"};
    for (int round = 0; round < rounds; ++round) {
        const std::string &name = names[random() % names.size()];
        int operation = static_cast<int>(random() % 6);
        // Appending too often would make this quadratic.
        if (operation == op_append && random() % 4 != 0) operation = op_unset;
        size_t which = random() % 6;
        std::string value = which < 5 ? values[which] : "";
        sf_dictext(name.c_str(), which < 5 ? value.c_str() : nullptr, "f",
                   round, operation);
        apply(&model, name, which < 5 ? &value : nullptr, round, operation);
        auto found = model.find(name);
        ASSERT_EQ(value_of(name),
                  found == model.end() ? undefined : found->second.value);
        if (round % 10000 != 0) continue;
        for (const std::string &each : names) {
            found = model.find(each);
            bool is_defined = found != model.end();
            ASSERT_EQ(value_of(each),
                      is_defined ? found->second.value : undefined);
            ASSERT_EQ(place_of(each),
                      is_defined ? "f:" + std::to_string(found->second.line)
                                 : undefined);
        }
    }
}

TEST(sf_dictionary, random_operations_agree_with_a_map) {
    std::vector<std::string> names;
    for (int i = 0; i < 500; ++i)
        names.push_back("n" + std::to_string(i));
    check_random_operations(names, 100000);
}

TEST(sf_dictionary, names_with_one_place_agree_with_a_map) {
    tovan::other_comparisons = 0;
    check_random_operations(support::equal_places(300), 50000);
    EXPECT_GT(tovan::other_comparisons, 0u);
}

std::string definitions(int count) {
    std::string content;
    for (int i = 0; i < count; ++i)
        content +=
            "NAME_" + std::to_string(i) + " value " + std::to_string(i) + "\n";
    return content;
}

TEST(sf_dictionary, many_names_can_be_defined) {
    support::empty_dictionary();
    support::write_file("dict", definitions(100000));
    EXPECT_EQ(sfdict("dict"), 0);
    EXPECT_EQ(value_of("NAME_0"), "value 0");
    EXPECT_EQ(value_of("NAME_99999"), "value 99999");
    EXPECT_EQ(place_of("NAME_99999"), "dict:100000");
}

TEST(sf_dictionary, many_names_can_be_removed) {
    support::empty_dictionary();
    support::write_file("dict", definitions(50000));
    sfdict("dict");
    for (int i = 0; i < 50000; i += 2)
        sf_dictext(("NAME_" + std::to_string(i)).c_str(), nullptr, "", 0, 0);
    for (int i = 0; i < 50000; ++i) {
        ASSERT_EQ(value_of("NAME_" + std::to_string(i)) == undefined,
                  i % 2 == 0);
    }
}

TEST(sf_dictionary, much_can_be_appended_to_one_name) {
    support::empty_dictionary();
    for (int i = 0; i < 300000; ++i)
        sf_dictext("A", "ten bytes.", "f", 1, op_append);
    EXPECT_EQ(value_of("A").size(), 300000u * 11 - 1);
}

TEST(sf_dictionary, many_lines_can_be_joined) {
    support::empty_dictionary();
    std::string content = "A ";
    for (int i = 0; i < 300000; ++i)
        content += "word \\\n\t\t";
    support::write_file("dict", content + "end\n");
    EXPECT_EQ(sfdict("dict"), 0);
    EXPECT_EQ(value_of("A").size(), 300000u * 5 + 3);
    EXPECT_EQ(place_of("A"), "dict:300001");
}

TEST(sf_dictionary, line_of_100_megabytes_is_a_line) {
    support::empty_dictionary();
    std::string value(100000000, 'x');
    support::write_file("dict", "A " + value + "\n1" + value + "\nB @A@\n");
    EXPECT_EQ(support::stderr_of([] { sfdict("dict"); }),
              "test: dict:2 1st character must be alphabetic or an underbar\n");
    EXPECT_TRUE(value_of("B") == value);
}

// What may be said of a dictionary that was cut off somewhere.
bool is_known_message(const std::string &line) {
    for (const char *known :
         {"test: -s arg unexpected EOF after \\<newline>",
          " illegal character in name",
          " 1st character must be alphabetic or an underbar",
          ": missing terminating '@' in '", ": terminating '@' missing in '",
          ": unsupported @ operator in '", ": unsupported % operator in '",
          ": unsupported @V#?@ operator in '",
          ": unsupported @V\\?@ operator in '"}) {
        if (line.find(known) != std::string::npos) return true;
    }
    return false;
}

TEST(sf_dictionary, file_may_end_anywhere) {
    const std::string content =
        "# comment\nA a\\\n \t b \\# # c\n#{ inner\nset B @A%s:x\\@y@ @A?@\n"
        "append B @A#d@@A\\_@@A|@\n#}\nunsetifnil C @A#ix.h@@@\nD @NotSet\n";
    for (size_t n = 0; n <= content.size(); ++n) {
        support::empty_dictionary();
        std::istringstream messages(read_dictionary(content.substr(0, n)));
        for (std::string line; std::getline(messages, line);)
            EXPECT_TRUE(is_known_message(line)) << n << ": " << line;
    }
    EXPECT_EQ(value_of("A"), "ab #");
}

TEST(sf_dictionary, deep_braces_use_no_stack) {
    support::empty_dictionary();
    std::string content;
    for (int i = 0; i < 100000; ++i)
        content += "#{ x\n";
    for (int i = 0; i < 100000; ++i)
        content += "#}\n";
    support::write_file("dict", content + "A x\n");
    EXPECT_EQ(sfdict("dict"), 0);
    EXPECT_EQ(place_of("A"), "dict:2");
}

#ifndef __SANITIZE_ADDRESS__  // which needs all of the address space
TEST(sf_dictionary, value_doubled_40_times_runs_out_of_memory) {
    support::outcome child = support::in_child([] {
        rlimit limit{0, 0};
        setrlimit(RLIMIT_CORE, &limit);
        std::string content = "A0 0123456789abcdef\n";
        for (int i = 1; i <= 40; ++i) {
            std::string before = "@A" + std::to_string(i - 1) + "@";
            content += "A" + std::to_string(i) + " " + before + before + "\n";
        }
        support::write_file("dict", content);
        limit = {size_t{1} << 29, size_t{1} << 29};
        setrlimit(RLIMIT_AS, &limit);
        sfdict("dict");
    });
    EXPECT_EQ(child.signal, SIGABRT);
    EXPECT_EQ(child.err, "test: Ran out of memory\n");
}
#endif

}  // namespace
