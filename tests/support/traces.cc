// traces.cc: what programs can trace.
#include "support/traces.h"

#include "support/child.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <set>

namespace support {

namespace {

// The name in a flag, which may have a level.
std::string name_of(const std::string &flag) {
    return flag.substr(0, flag.find('='));
}

std::string masked(std::string text, const std::string &pattern) {
    for (size_t i = 0; i < text.size() && i < pattern.size(); i++) {
        if (pattern[i] == '#') text[i] = '#';
    }
    return text;
}

}  // namespace

std::vector<std::string> listed_packages(const std::string &program) {
    const std::string mark = "@(#)-D";
    std::string bytes = read_file(program);
    std::set<std::string> names;
    for (size_t at = 0; (at = bytes.find(mark, at)) != std::string::npos;) {
        at += mark.size();
        std::string item = bytes.substr(at, bytes.find('\t', at) - at);
        names.insert(name_of(item.substr(0, item.find('|'))));
        EXPECT_TRUE(item.ends_with("|all")) << item;
    }
    return {names.begin(), names.end()};
}

void check_traces(const std::string &program,
                  const std::vector<traced_run> &rows) {
    std::string variable = program.substr(program.rfind('/') + 1) + "_debug";
    std::set<std::string> names;
    for (const traced_run &row : rows) {
        names.insert(name_of(row.package));
        std::vector<std::string> words = row.words;
        words.insert(words.begin(), program);
        EXPECT_EQ(run_program(words, row.input).err, "") << row.package;
        setenv(variable.c_str(), row.package.c_str(), 1);
        std::string trace = run_program(words, row.input).err;
        EXPECT_EQ(masked(trace, row.trace), row.trace);
        unsetenv(variable.c_str());
        words.insert(words.begin() + 1, {"-V", row.package});
        trace = run_program(words, row.input).err;
        EXPECT_EQ(masked(trace, row.trace), row.trace);
    }
    EXPECT_EQ(listed_packages(program),
              std::vector<std::string>(names.begin(), names.end()));
}

}  // namespace support
