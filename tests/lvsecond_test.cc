// lvsecond_test.cc: a second opinion on the expansion language: the rules one
// by one, recursive and slow, against the library on random texts.
#include "support/child.h"
#include "support/expansion.h"

#include <ctype.h>
#include <gtest/gtest.h>
#include <setjmp.h>
#include <string.h>
#include <tovan/dystr.h>
#include <tovan/errexit.h>
#include <tovan/lvexpand.h>
#include <map>
#include <random>

namespace {

const std::vector<support::variable> variables = {
    {"A", "a"},       {"B", " b b "}, {"E", ""},        {"F", "empty"},
    {"X[a]", "xa"},   {"X[]", "x"},   {"X[xa]", "xxa"}, {"X[b b]", "take1st"},
    {"A[a]", "@A )"}, {"F[0]", "]["}, {"P", "("},
};

struct wrong_text {
    std::string message;
};

bool is_white(char c) {
    return c == ' ' || c == '\t' || c == '\n';
}

bool is_name_start(char c) {
    return isalpha(static_cast<unsigned char>(c)) || c == '_';
}

bool is_name(char c) {
    return is_name_start(c) || isdigit(static_cast<unsigned char>(c));
}

std::string look_up(const std::string &name) {
    for (const support::variable &v : variables) {
        if (v.name == name) return v.value;
    }
    return "";
}

std::string without_leading(std::string text) {
    while (!text.empty() && is_white(text.front()))
        text.erase(0, 1);
    return text;
}

// Three functions suffice: the others are not the expander's.
std::string run(const std::string &text) {
    size_t end = 0;
    while (end < text.size() && !is_white(text[end]))
        end++;
    std::string name = text.substr(0, end);
    std::string argument = without_leading(text.substr(end));
    if (name == "empty") return argument.empty() ? "1" : "0";
    if (name == "notempty") return argument.empty() ? "0" : "1";
    if (name == "take1st") {
        size_t length = 0;
        while (length < argument.size() && !is_white(argument[length]))
            length++;
        return argument.substr(0, length);
    }
    throw wrong_text{"unsupported kivs function `" + name + "'"};
}

// The place of the matching bracket, from `at` on; npos when there is none.
size_t matching(const std::string &text, size_t at, char open, char close) {
    int depth = 1;
    for (; at < text.size(); at++) {
        if (text[at] == open) depth++;
        if (text[at] == close && --depth == 0) return at;
    }
    return std::string::npos;
}

std::string expand(const std::string &text);

std::string call(const std::string &text, size_t &at) {
    size_t close = matching(text, at, '(', ')');
    if (close == std::string::npos) throw wrong_text{"unbalanced ')'"};
    std::string inside = text.substr(at, close - at);
    at = close + 1;
    return run(without_leading(expand(inside)));
}

std::string reference(const std::string &text, size_t &at) {
    std::string name;
    while (at < text.size() && is_name(text[at]))
        name += text[at++];
    if (at == text.size() || text[at] != '[') {
        return name == "NotSet" ? "@NotSet" : look_up(name);
    }
    size_t close = matching(text, at + 1, '[', ']');
    if (close == std::string::npos) throw wrong_text{"no closing ]"};
    std::string inside = text.substr(at + 1, close - at - 1);
    at = close + 1;
    return look_up(name + "[" + expand(inside) + "]");
}

std::string expand(const std::string &text) {
    std::string out;
    for (size_t at = 0; at < text.size();) {
        char c = text[at++];
        if (c != '@') {
            if (!out.empty() || !is_white(c)) out += c;
        } else if (at == text.size()) {
            out += '@';
        } else if (text[at] == '0') {
            at++;
        } else if (text[at] == '(') {
            out += call(text, ++at);
        } else if (is_name_start(text[at])) {
            out += reference(text, at);
        } else {
            out += text[at++];
        }
    }
    while (!out.empty() && is_white(out.back()))
        out.pop_back();
    return out;
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

jmp_buf way_back;

// What the library makes of a text: its expansion, or nothing behind its
// message on standard error.
void print_expansion(const std::string &text) {
    static dy output;
    dyreuse(&output, 16);
    if (setjmp(way_back) == 0) {
        lvexpand(text.c_str(), &output, "f", 0);
        eprintf("<%s>\n", output.buffer);
    }
}

std::string expected_print(const std::string &text) {
    try {
        return "<" + expand(text) + ">\n";
    } catch (const wrong_text &wrong) {
        return support::complaint(wrong.message);
    }
}

TEST(lvexpand, agrees_with_the_rules_on_random_texts) {
    support::load_variables(variables);
    std::mt19937 random(20260511);
    constexpr int rounds = 100;
    constexpr int texts_in_a_round = 1000;
    for (int round = 0; round < rounds; round++) {
        std::vector<std::string> texts;
        std::string expected;
        for (int i = 0; i < texts_in_a_round; i++) {
            texts.push_back(random_text(random));
            expected += expected_print(texts.back());
        }
        support::outcome printed = support::in_child([&] {
            set_exit_rtn([](int) { longjmp(way_back, 1); });
            for (const std::string &text : texts)
                print_expansion(text);
        });
        ASSERT_EQ(printed.err, expected);
        ASSERT_EQ(printed.exit_status, 0);
    }
}

}  // namespace
