// rxpmodel_test.cc: the matcher against the rules by which it must match.
#include "support/rxp_model.h"

#include <gtest/gtest.h>
#include <string.h>
#include <tovan/rxpcomp.h>
#include <random>

namespace {

// Compares the library on one program and subject with the rules.
//   result    whether the rules came to an end
bool expect_agreement(const std::string &pattern, const std::string &subject,
                      const unsigned char *program) {
    support::rxp_result rules =
        support::rxp_by_the_rules(subject, program, 20000);
    if (rules.gave_up) return false;
    // From the second run on there is a plan.
    std::string difference;
    for (int run = 1; run <= 3; run++) {
        difference = support::rxp_difference(
            rules, support::rxp_by_the_library(subject, program));
        EXPECT_EQ(difference, "")
            << pattern << " on \"" << subject << "\", run " << run;
    }
    difference = support::rxp_difference(
        rules, support::rxp_by_the_memory(subject, program));
    EXPECT_EQ(difference, "")
        << pattern << " on \"" << subject << "\", with memory";
    difference = support::rxp_difference(
        rules, support::rxp_by_the_automaton(subject, program));
    EXPECT_EQ(difference, "")
        << pattern << " on \"" << subject << "\", as an automaton";
    return true;
}

std::vector<std::string> all_texts(const std::vector<std::string> &symbols,
                                   size_t max_length) {
    std::vector<std::string> texts = {""};
    size_t first = 0;
    for (size_t length = 1; length <= max_length; length++) {
        size_t last = texts.size();
        for (; first < last; first++) {
            for (const std::string &symbol : symbols)
                texts.push_back(texts[first] + symbol);
        }
    }
    return texts;
}

// Under the sanitizers one pattern in so many.
#if defined(__SANITIZE_ADDRESS__)
constexpr size_t stride = 4;
#else
constexpr size_t stride = 1;
#endif

void expect_agreement_on_all(const std::vector<std::string> &patterns,
                             const std::vector<std::string> &subjects) {
    size_t programs = 0;
    for (size_t i = 0; i < patterns.size(); i += stride) {
        const std::string &pattern = patterns[i];
        if (rxpcomp(pattern.c_str(), 0, 0) < 0) continue;
        programs++;
        for (const std::string &subject : subjects)
            expect_agreement(pattern, subject, rxpbuf);
        if (testing::Test::HasFailure()) FAIL() << pattern;
    }
    EXPECT_GT(programs, 1000 / stride);
}

TEST(rxpmodel, all_short_patterns_with_groups) {
    expect_agreement_on_all(
        all_texts({"a", "b", ".", "*", "<", "|", ">", ">*"}, 5),
        all_texts({"a", "b"}, 3));
}

TEST(rxpmodel, all_short_patterns_with_submatches) {
    expect_agreement_on_all(
        all_texts({"a", "*", "<", "|", ">*", "\\(", "\\)", "\\1"}, 5),
        all_texts({"a", "b"}, 3));
}

TEST(rxpmodel, all_short_patterns_with_states_of_no_width) {
    expect_agreement_on_all(
        all_texts({"a", "\\{", "\\}", "\\-", "<", ">*", "$", "+"}, 5),
        all_texts({"a", " "}, 3));
}

// ---- random programs ----------------------------------------------------

class generator {
  public:
    explicit generator(unsigned seed) : numbers(seed) {
    }

    int below(int limit) {
        return static_cast<int>(numbers() % static_cast<unsigned>(limit));
    }

    std::string one_of(const std::vector<std::string> &texts) {
        return texts[numbers() % texts.size()];
    }

    std::string pattern(bool with_references) {
        std::string text = term(3, with_references);
        if (below(8) == 0) text = "^" + text;
        if (below(8) == 0) text += "$";
        if (below(10) == 0) text = "!" + text;
        return text;
    }

    std::string subject(int max_length) {
        std::string text;
        for (int n = below(max_length + 1); n > 0; n--)
            text += one_of({"a", "a", "a", "b", "b", "c", " ", "A", "1", "_"});
        return text;
    }

  private:
    std::mt19937 numbers;

    std::string item(int depth, bool with_references) {
        if (depth == 0 || below(3) < 2) {
            return one_of({"a", "a", "a", "b", "b", "c", ".", "[ab]", "[^a]",
                           "\\{", "\\}", "\\_", "\\-", "\\=", "\\~", "\\#"});
        }
        auto inner = [&] { return term(depth - 1, with_references); };
        switch (below(with_references ? 6 : 5)) {
            case 0:
                return "<" + inner() + "|" + inner() + ">";
            case 1:
                return "<" + inner() + "|>";
            case 2:
                return "<" + inner() + ">";
            case 3:
                return "<" + inner() + ">*";
            case 4:
                return "\\(" + inner() + "\\)";
            default:
                return "\\1";
        }
    }

    std::string term(int depth, bool with_references) {
        std::string text;
        for (int n = 1 + below(4); n > 0; n--) {
            text += item(depth, with_references);
            int closure = below(8);
            if (closure < 2) text += "*";
            if (closure == 2) text += "+";
        }
        return text;
    }
};

void expect_agreement_on_random(bool with_references, int pairs,
                                unsigned seed) {
    generator random(seed);
    int compared = 0;
    int matching = 0;
    while (compared < pairs) {
        std::string pattern = random.pattern(with_references);
        int fold = random.below(10) == 0;
        if (rxpcomp(pattern.c_str(), 0, fold) < 0) continue;
        for (int i = 0; i < 6; i++) {
            std::string subject = random.subject(i < 5 ? 14 : 40);
            if (!expect_agreement(pattern, subject, rxpbuf)) continue;
            compared++;
            matching += matches.pair[0].start != nullptr;
        }
        if (testing::Test::HasFailure()) FAIL() << pattern;
    }
    EXPECT_GT(matching, compared / 3);
}

// What the sanitizers watch takes ten times as long, and the results are
// compared without them.
#if defined(__SANITIZE_ADDRESS__)
constexpr int pairs = 5000;
#else
constexpr int pairs = 15000;
#endif

TEST(rxpmodel, random_programs) {
    expect_agreement_on_random(false, pairs, 1);
}

TEST(rxpmodel, random_programs_with_references) {
    expect_agreement_on_random(true, pairs / 2, 2);
}

// ---- defects that were repaired -----------------------------------------

void expect_agreement_of(const std::string &pattern,
                         const std::string &subject) {
    ASSERT_GT(rxpcomp(pattern.c_str(), 0, 0), 0) << pattern;
    EXPECT_TRUE(expect_agreement(pattern, subject, rxpbuf));
}

TEST(rxpmodel, open_branches_belong_to_the_memory) {
    expect_agreement_of("<a*<>|a*>+\\{", "ab");
}

TEST(rxpmodel, a_reference_to_a_submatch_that_ends_before_it_starts) {
    expect_agreement_of(
        "<<<a*>\\(.+bc*\\)|c\\~*\\(ba[^a]+[ab]\\)*b>+\\1>*<c<.+b>**[ab]|"
        "\\~<<\\}|.b>>*>*",
        "bA a a1bccAb");
}

TEST(rxpmodel, an_empty_program_is_not_one_text) {
    expect_agreement_of("", "");
    expect_agreement_of("", "a");
}

TEST(rxpmodel, starts_that_are_left_out_would_have_written_registers) {
    expect_agreement_of("<\\(<[ab]*|><ab|b.>b+<[^a]*c>\\)a\\~*[^a]>*ac*",
                        "_ac a1");
}

TEST(rxpmodel, a_start_behind_an_empty_run_is_tried) {
    expect_agreement_of("a*bc*$", " _1abaab");
}

TEST(rxpmodel, a_scan_with_memory_before_any_stretch_is_known) {
    expect_agreement_of("<a*<>|a*>+\\{.*a", "b ab");
    expect_agreement_of("\\_x", "   x");
}

}  // namespace
