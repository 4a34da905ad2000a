// fmatch_fuzz.cc: any pattern and any subject: the result is that of the plain
// recursion, and the steps stay below their bound, errors or none.
#include "fuzz.h"

#include "../lib/private_fmgraph.h"
#include "support/slow_fmatch.h"

#include <stdlib.h>
#include <tovan/fmatch.h>
#include <algorithm>

namespace {

// The plain recursion tries all ways: these lengths keep their number small.
constexpr size_t longest_pattern = 40;
constexpr size_t longest_subject = 16;

// So few that most of what reports is looked at behind the last one too.
constexpr size_t most_reports = 4;

// The way that takes over when there is too much to report.
int matches_in_graph(const std::string &pattern, const std::string &subject) {
    bool negated = !pattern.empty() && pattern[0] == '!';
    auto p = reinterpret_cast<tovan::text_pointer>(pattern.c_str()) + negated;
    auto f = reinterpret_cast<tovan::text_pointer>(subject.c_str());
    return tovan::match_in_graph(p, p, f, nullptr, nullptr) != negated;
}

void match(const std::string &pattern, const std::string &subject) {
    support::slow_fmatch slow(false);
    slow.most_steps = 20000;
    int expected = slow.match(subject, pattern);
    tovan::brace_steps = 0;
    tovan::most_brace_reports = most_reports;
    int result = fmatch(subject.c_str(), pattern.c_str());
    size_t braces =
        static_cast<size_t>(std::count(pattern.begin(), pattern.end(), '{'));
    size_t bound = pattern.size() * (subject.size() + 1) * (1 + braces) + 1000;
    // Where there are errors, braces may be left open, and all is matched twice.
    if (!slow.messages.empty() || slow.gave_up()) bound *= 5;
    if (tovan::brace_steps > bound) abort();
    if (!slow.gave_up() && result != expected) abort();
    if (matches_in_graph(pattern, subject) != result) abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string bytes(reinterpret_cast<const char *>(data), size);
    size_t end = bytes.find('\0');
    std::string pattern = bytes.substr(0, end);
    std::string subject;
    if (end != std::string::npos) subject = bytes.c_str() + end + 1;
    if (pattern.size() > longest_pattern || subject.size() > longest_subject)
        return -1;
    match(pattern, subject);
    return 0;
}
