// lvvarmatch_test.cc: variables by name and subscript.
#include "support/child.h"
#include "support/variables.h"

#include <gtest/gtest.h>
#include <tovan/fmatch.h>
#include <tovan/lvget.h>
#include <random>

namespace {

using support::heap_image;

TEST(lvvarmatch, exact_before_longer_before_shorter_before_plain) {
    const struct {
        std::vector<support::variable> variables;
        int use_plain;
        const char *key;
        const char *value;
    } rows[] = {
        {{{"X", "p"}, {"X[b]", "b"}}, 0, "a", nullptr},
        {{{"X", "p"}, {"X[b]", "b"}}, 1, "a", "p"},
        {{{"X", "p"}, {"X[b]", "b"}}, 2, "b", "b"},
        {{{"X[*]", "any"}, {"X[a*]", "as"}}, 0, "abc", "as"},
        {{{"X[a*]", "as"}, {"X[*]", "any"}}, 0, "abc", "as"},
        {{{"X[*]", "any"}, {"X[a*]", "as"}}, 0, "b", "any"},
        {{{"X[a*c]", "long"}, {"X[a]", "exact"}}, 0, "a", "exact"},
        {{{"X[a??????]", "long"}, {"X[abcdefg]", "exact"}},
         0,
         "abcdefg",
         "exact"},
        {{{"X[*]", "any"}, {"X", "p"}}, 1, "a", "any"},
        {{{"X", "p"}, {"X[*]", "any"}}, 1, "a", "any"},
        {{{"X[a]b", "odd"}}, 0, "a", nullptr},
        {{{"X[a", "open"}}, 0, "a", nullptr},
        {{{"X[]", "empty"}}, 0, "", "empty"},
        {{{"X[a]", "a"}}, 0, "", nullptr},
        {{{"XY[a]", "other"}, {"X]", "other"}}, 1, "a", nullptr},
        {{{"X[{a,b}]", "braces"}}, 0, "b", "braces"},
        {{{"X[!a]", "not"}}, 0, "b", "not"},
        {{{"X[[ab]]", "class"}}, 0, "b", "class"},
        {{{"X[a*]", "as"}}, 0, "a]", "as"},
        {{{"X[*]", "literal"}, {"X[?*]", "two"}}, 0, "*", "literal"},
    };
    for (const auto &row : rows) {
        support::load_variables(row.variables);
        EXPECT_STREQ(lvvarmatch(row.use_plain, "X", row.key), row.value)
            << row.variables[0].name << " for " << row.key;
    }
}

TEST(lvvarmatch, of_equally_long_patterns_the_first_one_met_stays) {
    heap_image image;
    image.add("X[a?]", "one");
    image.add("X[?b]", "two");
    support::load_heap(image.bytes());
    bool one_first = support::bucket_of("X[a?]") <= support::bucket_of("X[?b]");
    EXPECT_STREQ(lvvarmatch(0, "X", "ab"), one_first ? "one" : "two");
}

TEST(lvvarmatch, of_patterns_in_one_chain_the_first_one_stays) {
    heap_image image;
    image.add("X[a?]", "first");
    image.add("X[a?]", "second");
    support::load_heap(image.bytes());
    EXPECT_STREQ(lvvarmatch(0, "X", "ab"), "first");
}

TEST(lvvarmatch, a_name_may_hold_a_bracket_itself) {
    support::load_variables(
        {{"X[a][b*]", "inner"}, {"X[a]", "outer"}, {"X[*]", "any"}});
    EXPECT_STREQ(lvvarmatch(0, "X[a]", "bc"), "inner");
    EXPECT_STREQ(lvvarmatch(1, "X[a]", "c"), "outer");
    EXPECT_EQ(lvvarmatch(0, "X[", "c"), nullptr);
}

TEST(lvvarmatch, results_hold_until_the_reload) {
    support::load_variables({{"X[a]", "1"}, {"X[b]", "2"}});
    const char *a = lvvarmatch(0, "X", "a");
    EXPECT_STREQ(lvvarmatch(0, "X", "b"), "2");
    EXPECT_STREQ(a, "1");
}

// A second opinion: the scan over all entries, told step by step.
struct scanned {
    int bucket;
    std::string name;
    std::string value;
};

std::string scan(const std::vector<scanned> &entries, bool use_plain,
                 const std::string &name, const std::string &key) {
    std::string held = "(none)";
    bool holds = false;
    size_t best = 0;
    std::string wanted = key + "]";
    for (const scanned &entry : entries) {
        if (entry.name.compare(0, name.size(), name) != 0) continue;
        std::string rest = entry.name.substr(name.size());
        if (rest.empty()) {
            if (use_plain && !holds) held = entry.value;
            holds = holds || use_plain;
        } else if (rest[0] == '[') {
            if (rest.substr(1) == wanted) return entry.value;
            if (fmatch(wanted.c_str(), rest.c_str() + 1) != 0 &&
                rest.size() > best) {
                held = entry.value;
                holds = true;
                best = rest.size();
            }
        }
    }
    return held;
}

std::vector<scanned> entries;

int note(int bucket, int, const char *name, const char *value) {
    entries.push_back({bucket, name, value});
    return 0;
}

std::string pick(std::mt19937 &random,
                 const std::vector<std::string> &choices) {
    return choices[random() % choices.size()];
}

std::string random_name(std::mt19937 &random) {
    std::string name = pick(random, {"X", "XY", "Y", "", "X[a]"});
    if (random() % 4 == 0) return name;
    name += "[";
    for (unsigned n = random() % 4; n > 0; --n)
        name += pick(random, {"a", "b", "*", "?", "[ab]", "[^a]", "{a,b}"});
    return name + pick(random, {"]", "]", "]", "", "]b", "]["});
}

TEST(lvvarmatch, agrees_with_the_scan_on_random_heaps) {
    std::mt19937 random(20261121);
    for (int round = 0; round < 400; ++round) {
        heap_image image;
        bool with_strays = round % 4 == 0;
        for (unsigned i = 0; i < 1 + random() % 40; ++i) {
            std::string name = random_name(random);
            int bucket = support::bucket_of(name);
            if (with_strays && random() % 4 == 0) bucket = random() % 256;
            image.add_to(bucket, name, std::to_string(i));
        }
        support::load_heap(image.bytes());
        entries.clear();
        lvwalk(0, note);
        for (const char *name : {"X", "XY", "Y", "", "X[a]", "Z", "X["}) {
            for (const char *key : {"", "a", "b", "ab", "ba", "aab", "a]b"}) {
                for (int use_plain : {0, 1}) {
                    const char *value = lvvarmatch(use_plain, name, key);
                    ASSERT_EQ(value != nullptr ? value : "(none)",
                              scan(entries, use_plain != 0, name, key))
                        << "round " << round << ": " << name << " for " << key;
                }
            }
        }
    }
}

}  // namespace
