// rxpcost_test.cc: what evaluations may cost.
#include "support/child.h"

#include <gtest/gtest.h>
#include <string.h>
#include <sys/resource.h>
#include <tovan/private_rxp.h>
#include <tovan/private_rxprun.h>
#include <tovan/rxpcomp.h>
#include <algorithm>

namespace {

// The patterns of the benchmark, and those that send a search back and forth.
const char *const everyday[] = {
    "configure",
    "^#[a-z]+",
    "[A-Z][A-Z0-9]*_H",
    "<gcc|clang|ld>",
    "\\([a-z]+\\)/\\([a-z]+\\)\\.c",
    "lib.*\\.a$",
    "<<[a-z]+>=<[0-9]+>>",
    "[^ ]+ [^ ]+ [0-9][0-9]*$",
};
const char *const hard[] = {
    "<a|a>*[bd]",
    "<a|aa>*[bd]",
    "a*a*a*a*a*[bd]",
    "<<a*>*>*[bd]",
    ".*.*.*=.*x",
    "[a-z]+[0-9]",
    "a\\-a*\\_b",
    "\\_x",
    "\\-\\_x\\(\\)",
    "\\(<a|a>*\\)\\([bd]\\)[ce]",
    "<\\(a*\\)<>>*[bd]",
    "<\\(a\\)|\\(b\\)>*[bd]",
    "<\\(\\)a|a\\(\\)>*[bd]",
};

uint64_t states() {
    return static_cast<uint64_t>(tovan::rxp_end_state(rxpbuf)) + 1;
}

uint64_t count_of(tovan::rxp_opcode opcode) {
    uint64_t count = 0;
    for (uint64_t i = 1; i < states(); i++)
        count += tovan::rxp_states(rxpbuf)[i].opcode == opcode;
    return count;
}

uint64_t branches() {
    return count_of(tovan::rxp_branch);
}

// Those of alternatives counted one by one.
uint64_t submatches() {
    return count_of(tovan::rxp_open);
}

// A tool runs a program again and again, and each time in another way: first
// by the plain search, then by a plan, then as the plan has learnt.
void expect_bounds(const char *pattern, const std::string &subject,
                   int runs = 3) {
    ASSERT_GT(rxpcomp(pattern, 0, 0), 0) << pattern;
    uint64_t positions = subject.size() + 1;
    uint64_t steps = 4 * states() * positions;
    uint64_t heap = (16 + 12 * submatches()) * branches() * positions + 100000;
    for (int run = 1; run <= runs; run++) {
        rxpeval(subject.c_str());
        EXPECT_LE(tovan::rxp_last_cost.steps, steps)
            << pattern << " run " << run << " length " << subject.size();
        EXPECT_LE(tovan::rxp_last_cost.heap, heap)
            << pattern << " run " << run << " length " << subject.size();
    }
}

std::vector<std::string> long_subjects(size_t n) {
    std::string words;
    while (words.size() < n)
        words += "lib/gcc a=12 FOO_H x.c  ";
    return {std::string(n, 'a'), std::string(n, 'a') + "b",
            std::string(n, ' ') + "b", words};
}

TEST(rxpcost, steps_and_heap_on_a_hundred_thousand_characters) {
    for (const std::string &subject : long_subjects(100000)) {
        for (const char *pattern : everyday)
            expect_bounds(pattern, subject);
        for (const char *pattern : hard)
            expect_bounds(pattern, subject);
    }
}

TEST(rxpcost, steps_and_heap_on_a_million_letters) {
    std::string subject(1000000, 'a');
    for (const char *pattern : everyday)
        expect_bounds(pattern, subject, 2);
    expect_bounds("<a|a>*[bd]", subject, 2);
    expect_bounds("\\(<a|a>*\\)\\([bd]\\)", subject, 2);
}

TEST(rxpcost, lines_take_no_heap) {
    const char *const lines[] = {"#include <lib/gcc.h>",
                                 "gcc -c lib/main.c -o main.o",
                                 "value=12;",
                                 "ld -r main.o libx.a",
                                 "one two three 42",
                                 "#ifndef CONFIG_H",
                                 ""};
    for (const char *pattern : everyday) {
        ASSERT_GT(rxpcomp(pattern, 0, 0), 0);
        for (int run = 1; run <= 3; run++) {
            for (const char *line : lines) {
                rxpeval(line);
                EXPECT_EQ(tovan::rxp_last_cost.heap, 0u)
                    << pattern << " on " << line << " run " << run;
            }
        }
    }
}

// The most that one of a few evaluations takes: they do not go the same way.
uint64_t most_steps(const std::string &subject) {
    uint64_t most = 0;
    for (int run = 1; run <= 4; run++) {
        rxpeval(subject.c_str());
        most = std::max(most, tovan::rxp_last_cost.steps);
    }
    return most;
}

TEST(rxpcost, steps_grow_with_the_length_only) {
    for (const char *pattern : hard) {
        ASSERT_GT(rxpcomp(pattern, 0, 0), 0);
        double before = 0;
        for (size_t n = 20000; n <= 80000; n *= 2) {
            auto steps = static_cast<double>(most_steps(std::string(n, 'a')));
            if (before > 0) {
                EXPECT_LT(steps / before, 2.2) << pattern << " at " << n;
            }
            before = steps;
        }
    }
}

// All of them would take 2^n steps, or n * n.
TEST(rxpcost, many_registers_stay_linear) {
    std::string nine;
    for (int k = 1; k <= 9; k++)
        nine += "\\(\\)";
    std::string pattern = "<a" + nine + "|" + nine + "b>*[cd]\\}";
    std::string subject = std::string(50000, 'a') + "b";
    expect_bounds(pattern.c_str(), subject);
}

TEST(rxpcost, long_subjects_need_little_stack) {
    support::outcome child = support::in_child([] {
        rlimit limit = {size_t{256} * 1024, size_t{256} * 1024};
        setrlimit(RLIMIT_STACK, &limit);
        std::string subject(100000, 'a');
        for (const char *pattern : hard) {
            if (rxpcomp(pattern, 0, 0) < 0) _exit(1);
            for (int run = 1; run <= 3; run++)
                rxpeval(subject.c_str());
        }
    });
    EXPECT_EQ(child.exit_status, 0);
    EXPECT_EQ(child.signal, 0);
}

}  // namespace
