// lvsrcdir_test.cc: the build tree's source directories.
#include "support/variables.h"

#include <gtest/gtest.h>
#include <tovan/lvget.h>

namespace {

std::string joined(char **words) {
    std::string all;
    for (; *words != nullptr; ++words)
        all += std::string(all.empty() ? "" : "|") + *words;
    return all;
}

TEST(lvsrcdirs, gives_the_words_with_and_without_the_first) {
    const struct {
        std::vector<support::variable> variables;
        std::string all;
        std::string further;
    } rows[] = {
        {{{"SrcPath", ". src lib"}}, ".|src|lib", "src|lib"},
        {{{"SrcPath", " \t.\nsrc\t "}}, ".|src", "src"},
        {{{"SrcPath", "only"}}, "only", ""},
        {{{"SrcPath", ""}}, "", ""},
        {{{"SrcPath", "  "}}, "", ""},
        {{{"SrcPath", "a\rb\fc"}}, "a\rb\fc", ""},
        {{{"Other", "x"}}, ".", ""},
    };
    for (const auto &row : rows) {
        support::load_variables(row.variables);
        EXPECT_EQ(joined(lvsrcdirs(0)), row.all);
        EXPECT_EQ(joined(lvsrcdirs(1)), row.further);
        EXPECT_EQ(joined(lvsrcdirs(0)), row.all);
    }
}

TEST(lvsrcdirs, one_word_without_the_first_is_null_at_once) {
    support::load_variables({{"SrcPath", "."}});
    EXPECT_EQ(lvsrcdirs(1)[0], nullptr);
    EXPECT_EQ(lvsrcdirs(-1)[0], nullptr);
}

TEST(lvsrcdirs, is_built_once_a_heap) {
    support::load_variables({{"SrcPath", "a b"}});
    char **first = lvsrcdirs(0);
    EXPECT_EQ(lvsrcdirs(0), first);
    EXPECT_STREQ(lvvar("SrcPath"), "a b");  // the copy was split, not this
    support::load_variables({{"SrcPath", "c d e"}});
    EXPECT_EQ(joined(lvsrcdirs(0)), "c|d|e");
}

TEST(lvsrcdirs, many_words_are_taken) {
    std::string value;
    for (int i = 0; i < 10000; ++i)
        value += "d" + std::to_string(i) + " ";
    support::load_variables({{"SrcPath", value}});
    char **words = lvsrcdirs(1);
    EXPECT_STREQ(words[0], "d1");
    EXPECT_STREQ(words[9998], "d9999");
    EXPECT_EQ(words[9999], nullptr);
}

}  // namespace
