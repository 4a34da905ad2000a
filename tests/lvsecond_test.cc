// lvsecond_test.cc: the expander against a second opinion, on random texts.
#include "support/child.h"
#include "support/expansion.h"
#include "support/plain_expansion.h"

#include <gtest/gtest.h>
#include <setjmp.h>
#include <stdio.h>
#include <tovan/dystr.h>
#include <tovan/errexit.h>
#include <tovan/lvexpand.h>
#include <random>
#include <sstream>

namespace {

const std::vector<support::variable> variables = {
    {"A", "a"},       {"B", " b b "}, {"E", ""},        {"F", "empty"},
    {"X[a]", "xa"},   {"X[]", "x"},   {"X[xa]", "xxa"}, {"X[b b]", "take1st"},
    {"A[a]", "@A )"}, {"F[0]", "]["}, {"P", "("},
};

std::string look_up(const std::string &name) {
    for (const support::variable &v : variables) {
        if (v.name == name) return v.value;
    }
    return "";
}

std::string first_word(const std::string &text) {
    return text.substr(0, text.find_first_of(" \t\n"));
}

std::string behind_first_word(const std::string &text) {
    size_t at = text.find_first_not_of(" \t\n", first_word(text).size());
    return at == std::string::npos ? "" : text.substr(at);
}

// Three functions suffice: the others are not the expander's.
bool run(const std::string &call, std::string *output) {
    std::string name = first_word(call);
    std::string argument = behind_first_word(call);
    if (name == "empty") {
        *output += argument.empty() ? "1" : "0";
    } else if (name == "notempty") {
        *output += argument.empty() ? "0" : "1";
    } else if (name == "take1st") {
        *output += first_word(argument);
    } else {
        return false;
    }
    return true;
}

std::string random_text(std::mt19937 &random) {
    static const char *const pieces[] = {
        "@(",  "@(",  "@(empty ", "@(take1st ", "@(notempty", "@X[", "@X[",
        "@A[", "@F[", "@A",       "@B",         "@E",         "@F",  "@P",
        "@0",  "@@",  "@",        "@NotSet",    "@U",         ")",   ")",
        ")",   "]",   "]",        "]",          "(",          "[",   " ",
        "\t",  "\n",  "a",        "b",          "empty ",     "\r",
    };
    std::string text;
    for (size_t n = random() % 14; n > 0; n--)
        text += pieces[random() % (sizeof pieces / sizeof pieces[0])];
    return text;
}

std::string plain_outcome(const std::string &text) {
    try {
        return support::plain_expansion(text, {look_up, run});
    } catch (const support::wrong_text &wrong) {
        return support::complaint(wrong.message);
    }
}

jmp_buf way_back;
constexpr char end_of_text = '\x01';

// Writes the expansion, or the library its message, to standard error.
void print_outcome(const std::string &text) {
    static dy output;
    dyreuse(&output, 16);
    if (setjmp(way_back) == 0) {
        lvexpand(text.c_str(), &output, "f", 0);
        fputs(output.buffer, stderr);
    }
    fputc(end_of_text, stderr);
}

std::vector<std::string> outcomes(const std::vector<std::string> &texts) {
    support::outcome printed = support::in_child([&] {
        set_exit_rtn([](int) { longjmp(way_back, 1); });
        for (const std::string &text : texts)
            print_outcome(text);
    });
    EXPECT_EQ(printed.exit_status, 0);
    std::istringstream stream(printed.err);
    std::vector<std::string> result;
    for (std::string one; std::getline(stream, one, end_of_text);)
        result.push_back(one);
    return result;
}

TEST(lvexpand, agrees_with_the_rules_on_random_texts) {
    constexpr int count = 50'000;
    support::load_variables(variables);
    std::mt19937 random(20260511);
    std::vector<std::string> texts;
    for (int i = 0; i < count; i++)
        texts.push_back(random_text(random));
    std::vector<std::string> found = outcomes(texts);
    ASSERT_EQ(found.size(), texts.size());
    for (size_t i = 0; i < texts.size(); i++)
        ASSERT_EQ(found[i], plain_outcome(texts[i])) << texts[i];
}

}  // namespace
