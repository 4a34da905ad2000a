// plain_expansion.cc: the rules of the expansion language one by one.
#include "support/plain_expansion.h"

#include <ctype.h>

namespace support {

namespace {

bool is_white(char c) {
    return c == ' ' || c == '\t' || c == '\n';
}

bool is_name_start(char c) {
    return isalpha(static_cast<unsigned char>(c)) || c == '_';
}

bool is_name(char c) {
    return is_name_start(c) || isdigit(static_cast<unsigned char>(c));
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

// Appends the result of the call whose inside begins at `at`.
void call(const std::string &text, size_t *at, std::string *out,
          const plain_tree &tree) {
    size_t close = matching(text, *at, '(', ')');
    if (close == std::string::npos) throw wrong_text{"unbalanced ')'"};
    std::string inside = plain_expansion(text.substr(*at, close - *at), tree);
    *at = close + 1;
    while (!inside.empty() && is_white(inside.front()))
        inside.erase(0, 1);
    if (tree.run(inside, out)) return;
    size_t end = inside.find_first_of(" \t\n");
    throw wrong_text{"unsupported kivs function `" + inside.substr(0, end) +
                     "'"};
}

// The value of the variable whose name begins at `at`.
std::string reference(const std::string &text, size_t *at,
                      const plain_tree &tree) {
    std::string name;
    while (*at < text.size() && is_name(text[*at]))
        name += text[(*at)++];
    if (*at == text.size() || text[*at] != '[')
        return name == "NotSet" ? "@NotSet" : tree.value(name);
    size_t inside = *at + 1;
    size_t close = matching(text, inside, '[', ']');
    if (close == std::string::npos) throw wrong_text{"no closing ]"};
    *at = close + 1;
    std::string subscript =
        plain_expansion(text.substr(inside, close - inside), tree);
    return tree.value(name + "[" + subscript + "]");
}

}  // namespace

std::string plain_expansion(const std::string &text, const plain_tree &tree) {
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
            call(text, &++at, &out, tree);
        } else if (is_name_start(text[at])) {
            out += reference(text, &at, tree);
        } else {
            out += text[at++];
        }
    }
    while (!out.empty() && is_white(out.back()))
        out.pop_back();
    return out;
}

}  // namespace support
