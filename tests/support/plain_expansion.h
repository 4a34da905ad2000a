// plain_expansion.h: a second opinion on the expansion language: the rules one
// by one, recursive and slow.
#ifndef TOVAN_TESTS_PLAIN_EXPANSION_H
#define TOVAN_TESTS_PLAIN_EXPANSION_H

#include <functional>
#include <string>

namespace support {

// What the rules are about.
struct plain_tree {
    // The value of a variable; empty when it is not set.
    std::function<std::string(const std::string &name)> value;
    // Runs an expanded call; false when no function has its name.
    std::function<bool(const std::string &call, std::string *output)> run;
};

// How an expansion ends that is wrong.
struct wrong_text {
    std::string message;
};

// Throws wrong_text.
std::string plain_expansion(const std::string &text, const plain_tree &tree);

}  // namespace support

#endif
