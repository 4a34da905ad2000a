// slow_fmatch.cc: the rules of file-name patterns by plain recursion.
#include "support/slow_fmatch.h"

#include <stdio.h>

namespace support {

int slow_fmatch::match(const std::string &subject, const std::string &pattern) {
    bool negated = !pattern.empty() && pattern[0] == '!';
    pattern_ = negated ? pattern.substr(1) : pattern;
    subject_ = subject;
    messages.clear();
    steps = 0;
    if (pattern_ == "*") return negated ? 0 : 1;
    return step(0, 0, 0, 0, {}) != negated;
}

void slow_fmatch::trace(const char *sign, size_t p, size_t f, int code,
                        const stack &open) {
    if (!traced_) return;
    int level = code & 0x1ff;
    char number[20];
    snprintf(number, sizeof number, "%04o", static_cast<unsigned>(code));
    messages +=
        std::string(static_cast<size_t>(2 * level), ' ') + sign + number +
        ": " + std::to_string(open.size()) + ": p=" + pattern_.substr(p) +
        "; f=" + subject_.substr(f) +
        "; pc=" + (open.empty() ? "NULL" : pattern_.substr(open.back())) + "\n";
}

bool slow_fmatch::step(size_t p, size_t f, int level, int mark, stack open) {
    if (++steps > most_steps) return false;
    trace("", p, f, mark + level, open);
    if (p == pattern_.size()) return f == subject_.size();
    do {
        trace("-", p, f, mark + level, open);
        char c = pattern_[p];
        bool empty = f == subject_.size();
        bool ends = !open.empty() && (c == ',' || c == '}');
        if (empty && c != '*' && c != '{' && !ends) return false;
        if (c == '*') return star(p, f, level, open);
        if (c == '{') return brace(p, f, level, open);
        if (ends) {
            if (c == '}' && open.back() != p + 1) {
                std::string below = "NULL";
                if (open.size() > 1)
                    below = pattern_.substr(open[open.size() - 2]);
                messages += "p=" + pattern_.substr(p) +
                            "; pc=" + pattern_.substr(open.back()) +
                            ", stk=" + below + "\n";
                messages += "Whoops: logic error in fmatch for pattern '" +
                            pattern_ + "'\n";
                return false;
            }
            p = open.back();
            open.pop_back();
            continue;
        }
        if (c == '[') {
            ++p;
            if (!class_holds(&p, static_cast<unsigned char>(subject_[f])))
                return false;
        } else if (c == '?') {
            ++p;
        } else {
            if (c == '\\' && p + 1 < pattern_.size()) c = pattern_[++p];
            if (subject_[f] != c) return false;
            ++p;
        }
        ++f;
    } while (p < pattern_.size());
    return f == subject_.size();
}

bool slow_fmatch::class_holds(size_t *position, unsigned char byte) const {
    size_t p = *position, end = pattern_.size();
    bool negated = p < end && pattern_[p] == '^';
    if (negated) ++p;
    if (p == end) return false;
    auto at = [&](size_t i) { return static_cast<unsigned char>(pattern_[i]); };
    bool member = false;
    if (p < end && at(p) == ']') member |= byte == at(p++);
    if (p < end && at(p) == '-') member |= byte == at(p++);
    while (p < end && at(p) != ']') {
        if (p + 2 < end && at(p + 1) == '-' && at(p + 2) != ']') {
            member |= at(p) <= byte && byte <= at(p + 2);
            p += 3;
        } else {
            member |= byte == at(p++);
        }
    }
    *position = p < end ? p + 1 : p;
    return member != negated;
}

bool slow_fmatch::star(size_t p, size_t f, int level, const stack &open) {
    while (p < pattern_.size() && pattern_[p] == '*')
        ++p;
    if (p == pattern_.size()) return true;
    char c = pattern_[p];
    size_t end = subject_.size();
    if (c == '[' || c == '?' || c == '\\') {
        for (; f < end; ++f) {
            if (step(p, f, level + 1, 0x400, open)) return true;
        }
        return false;
    }
    if (c == '{' || (!open.empty() && (c == ',' || c == '}'))) {
        for (; f <= end; ++f) {
            if (step(p, f, level + 1, 0x600, open)) return true;
        }
        return false;
    }
    for (; f < end; ++f) {
        if (subject_[f] == c && step(p + 1, f + 1, level + 1, 0x800, open))
            return true;
    }
    return false;
}

bool slow_fmatch::brace(size_t p, size_t f, int level, const stack &open) {
    if (open.size() == 5) {
        messages += "{} nesting too deep in " + pattern_ + "\n";
        return false;
    }
    stack inner = open;
    inner.push_back(close_of(p + 1));
    for (size_t from = p + 1; from != std::string::npos;
         from = next_comma(from)) {
        if (step(from, f, level + 1, 0x200, inner)) return true;
    }
    return false;
}

// Behind the matching "}"; the end of the pattern when there is none.
size_t slow_fmatch::close_of(size_t p) const {
    int depth = 0;
    while (p < pattern_.size()) {
        char c = pattern_[p++];
        if (c == '\\') ++p;
        if (c == '{') ++depth;
        if (c == '}' && depth-- == 0) return p;
        if (c == '[') {
            if (p < pattern_.size() && pattern_[p] == ']') ++p;
            p = pattern_.find('[', p);
            if (p == std::string::npos) return pattern_.size();
            ++p;
        }
    }
    return pattern_.size();
}

size_t slow_fmatch::next_comma(size_t p) const {
    int depth = 0;
    while (p < pattern_.size()) {
        char c = pattern_[p++];
        if (c == '\\') ++p;
        if (c == '{') ++depth;
        if (c == '}' && depth-- == 0) break;
        if (c == ',' && depth == 0) return p;
        if (c == '[') {
            if (p < pattern_.size() && pattern_[p] == ']') ++p;
            p = pattern_.find(']', p);
            if (p == std::string::npos) break;
            ++p;
        }
    }
    return std::string::npos;
}

}  // namespace support
