// fmatch.cc: file-name patterns, and matching them where no brace is in play.
#include "fmatch.h"

#include "ident.h"
#include "private_fmatch.h"

#include <string.h>

// Between two stars every element of a pattern takes exactly one byte. So
//   - what stands behind the last star fits only at the end of the subject,
//   - every stretch before it may settle at the first place where it fits:
//     whatever matches behind a later place matches behind this one too.
// "lib*e?.*.[ch]" is "lib" at the start, ".[ch]" over the last two bytes, and
// between them the first "e?." that comes; no earlier choice is looked at
// again. Braces break the rule of one byte: match_braces() takes over there.

using namespace tovan;

namespace {

// Switched by fmatch_trace(), holds until the next call of it.
constinit bool tracing = false;

// All other bytes of a pattern stand for themselves; so do "," and "}" here.
constexpr byte_set special("*?[\\{");

// Calls visit(low, high) for each range of the class whose "[" is behind `p`;
// single members are ranges of one. The result is behind the class, or null
// when the pattern ends right behind "[" or "[^": then nothing matches.
template <typename Visitor>
text_pointer visit_class(text_pointer p, Visitor visit) {
    if (*p == '^') ++p;
    if (*p == '\0') return nullptr;
    if (*p == ']') {
        visit(']', ']');
        ++p;
    }
    if (*p == '-') {
        visit('-', '-');
        ++p;
    }
    while (*p != ']' && *p != '\0') {
        unsigned char low = *p++, high = low;
        if (*p == '-' && p[1] != ']' && p[1] != '\0') {
            high = p[1];
            p += 2;
        }
        visit(low, high);
    }
    return *p == ']' ? p + 1 : p;
}

// Matches up to the next star, "{" or end of the pattern. The result stands
// there; its pattern is null when something does not match.
place match_stretch(text_pointer p, text_pointer f) {
    for (;; ++f) {
        unsigned char c = *p;
        if (!special.holds[c]) {
            if (*f != c) return nowhere;
            ++p;
            continue;
        }
        if (c == '*' || c == '{' || c == '\0') return {p, f};
        if (*f == '\0') return nowhere;
        ++p;
        if (c == '[') {
            p = past_holding_class(p, *f);
            if (p == nullptr) return nowhere;
        } else if (c == '\\') {
            // At the very end of the pattern it stands for itself.
            if (*p != '\0') c = *p++;
            if (*f != c) return nowhere;
        }
    }
}

// Does the subject end with the literal bytes from `tail` to `end`?
bool ends_with(text_pointer subject, text_pointer tail, text_pointer end) {
    size_t length = static_cast<size_t>(end - tail);
    size_t left = strlen(reinterpret_cast<const char *>(subject));
    if (left < length) return false;
    text_pointer last = subject + left;
    while (end > tail) {
        if (*--end != *--last) return false;
    }
    return true;
}

// The last stretch of the pattern matches from `start` to `end`. Does it match
// at the end of the subject?
bool fits_at_end(text_pointer pattern, text_pointer start, text_pointer end) {
    if (*end == '\0') return true;
    start += strlen(reinterpret_cast<const char *>(end));
    return match_stretch(pattern, start).pattern != nullptr;
}

// A class as a set of bytes, for where a star tries it over and over.
struct byte_class {
    uint64_t words[4] = {};

    void add(unsigned low, unsigned high) {
        if (low > high) return;
        for (unsigned i = low / 64; i <= high / 64; ++i) {
            uint64_t from =
                i == low / 64 ? ~uint64_t{0} << low % 64 : ~uint64_t{0};
            uint64_t to = i == high / 64 ? ~uint64_t{0} >> (63 - high % 64)
                                         : ~uint64_t{0};
            words[i] |= from & to;
        }
    }
    bool holds(unsigned char byte) const {
        return (words[byte / 64] >> byte % 64 & 1) != 0;
    }
    text_pointer read(text_pointer p);
    text_pointer find_member(text_pointer f) const;
};

// Reads the class whose "[" is behind `p`; the result is as visit_class().
text_pointer byte_class::read(text_pointer p) {
    bool negated = *p == '^';
    p = visit_class(
        p, [this](unsigned char low, unsigned char high) { add(low, high); });
    for (uint64_t &word : words)
        word = negated ? ~word : word;
    return p;
}

// The first member, or null.
text_pointer byte_class::find_member(text_pointer f) const {
    for (; *f != '\0'; ++f) {
        if (holds(*f)) return f;
    }
    return nullptr;
}

// A stretch of the pattern over a stretch of the subject.
struct fit {
    text_pointer start;  // in the subject; null: there is none
    text_pointer pattern;
    text_pointer subject;
};

constexpr fit no_fit = {nullptr, nullptr, nullptr};

// The first fit of a stretch that begins with a class.
fit find_class_stretch(text_pointer p, text_pointer f) {
    byte_class members;
    p = members.read(p + 1);
    if (p == nullptr) return no_fit;
    for (; (f = members.find_member(f)) != nullptr; ++f) {
        place end = match_stretch(p, f + 1);
        if (end.pattern != nullptr) return {f, end.pattern, end.subject};
    }
    return no_fit;
}

// The first fit of any other stretch.
fit find_stretch(text_pointer p, text_pointer f) {
    unsigned char first = *p;
    if (first == '[') return find_class_stretch(p, f);
    bool literal = !special.holds[first];
    for (; *f != '\0'; ++f) {
        if (literal && (f = find_byte(f, first)) == nullptr) break;
        place end = match_stretch(p + literal, f + literal);
        if (end.pattern != nullptr) return {f, end.pattern, end.subject};
    }
    return no_fit;
}

text_pointer past_stars(text_pointer p) {
    while (*p == '*')
        ++p;
    return p;
}

// From behind the first star on, where something else than literals follows.
bool match_stretches(text_pointer whole, text_pointer star_p,
                     text_pointer star_f) {
    text_pointer p = star_p, f = star_f;
    while (*p != '\0' && *p != '{') {
        fit found = find_stretch(p, f);
        if (found.start == nullptr) return false;
        if (*found.pattern == '\0')
            return fits_at_end(p, found.start, found.subject);
        if (*found.pattern == '{' && p == star_p) {
            return match_braces(whole, found.pattern, found.subject, p,
                                found.start + 1);
        }
        p = past_stars(found.pattern);
        f = found.subject;
    }
    if (*p == '\0') return true;
    // Stars settle at their first fit, but what fails behind a brace may
    // report errors, and then once for each fit: all stars are tried again.
    return match_braces(whole, star_p - 1, star_f, nullptr, nullptr);
}

bool matches(text_pointer whole, text_pointer f) {
    if (tracing) return match_traced(whole, f);
    if (!special.holds[*whole] && *whole != *f) return false;
    place at = match_stretch(whole, f);
    if (at.pattern == nullptr) return false;
    unsigned char next = *at.pattern;
    if (next == '*') return match_stars(whole, at.pattern, at.subject);
    if (next == '\0') return *at.subject == '\0';
    return match_braces(whole, at.pattern, at.subject, nullptr, nullptr);
}

}  // namespace

text_pointer tovan::past_holding_class(text_pointer p, unsigned char byte) {
    bool holds = false;
    bool negated = *p == '^';
    p = visit_class(p, [&](unsigned char low, unsigned char high) {
        holds |= low <= byte && byte <= high;
    });
    return holds != negated ? p : nullptr;
}

bool tovan::match_stars(text_pointer whole, text_pointer p, text_pointer f) {
    p = past_stars(p);
    text_pointer end = p;
    while (!special.holds[*end])
        ++end;
    if (*end != '\0') return match_stretches(whole, p, f);
    return p == end || ends_with(f, p, end);
}

int fmatch(const char *subject, const char *pattern) {
    bool negated = *pattern == '!';
    if (negated) ++pattern;
    if (pattern[0] == '*' && pattern[1] == '\0') return !negated;
    return matches(reinterpret_cast<text_pointer>(pattern),
                   reinterpret_cast<text_pointer>(subject)) != negated;
}

void fmatch_trace(int flag) {
    tracing = flag != 0;
}

TOVAN_IDENT(fmatch, "8.4", "26/11/21")
