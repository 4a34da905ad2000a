// rxpmatch_fuzz.cc: any pattern on any subject: the same result in every way
// to run it, and that of the plain rules when the subject is small.
//   input   delimiter, fold, length of the pattern, pattern, subject
#include "../tests/support/rxp_model.cc"  // the plain rules

#include "fuzz.h"

#include <stdio.h>
#include <stdlib.h>

namespace {

void expect_same(const support::rxp_result &one,
                 const support::rxp_result &other) {
    std::string difference = support::rxp_difference(one, other);
    if (difference.empty()) return;
    fprintf(stderr, "%s\n", difference.c_str());
    abort();
}

bool has_references() {
    const tovan::rxp_state *states = tovan::rxp_states(rxpbuf);
    for (int i = 1; states[i].opcode != tovan::rxp_end; i++) {
        if (states[i].opcode == tovan::rxp_same_text ||
            states[i].opcode == tovan::rxp_up_to_same_text)
            return true;
    }
    return false;
}

void run(const std::string &subject) {
    constexpr long max_steps = 20000;
    support::rxp_result rules =
        support::rxp_by_the_rules(subject, rxpbuf, max_steps);
    // Back-references keep the plain search, which may take for ever.
    if (rules.gave_up && has_references()) return;
    support::rxp_result first = support::rxp_by_the_library(subject, rxpbuf);
    for (int i = 0; i < 2; i++)
        expect_same(first, support::rxp_by_the_library(subject, rxpbuf));
    expect_same(first, support::rxp_by_the_memory(subject, rxpbuf));
    expect_same(first, support::rxp_by_the_automaton(subject, rxpbuf));
    if (!rules.gave_up) expect_same(rules, first);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 3 || size > 400) return 0;
    size_t pattern_size = data[2] < size - 3 ? data[2] : size - 3;
    const char *text = reinterpret_cast<const char *>(data + 3);
    std::string pattern(text, pattern_size);
    // Up to its first null: that is what the library sees of it.
    std::string subject(
        std::string(text + pattern_size, size - 3 - pattern_size).c_str());
    if (rxpcomp(pattern.c_str(), data[0], data[1] & 1) < 0) return 0;
    run(subject);
    return 0;
}
