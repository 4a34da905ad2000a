// rxp_model.cc: the matching rules as a recursive procedure.
//
// Slow on purpose: nothing is remembered, and nothing is decided but by the
// rule for the state at hand. Registers are null-able positions, -1 is "none".
#include "support/rxp_model.h"

#include <string.h>
#include <tovan/private_rxpauto.h>
#include <tovan/private_rxpmemo.h>
#include <tovan/private_rxpplan.h>
#include <tovan/private_rxprun.h>
#include <tovan/rxpcomp.h>
#include <algorithm>
#include <sstream>
#include <vector>

namespace {

constexpr int failure = -1;
constexpr int none = -1;

class model {
  public:
    model(const std::string &text, const unsigned char *code, long max_steps)
        : subject(text), program(code), limit(max_steps) {
        ranges = program + 4 * program[2] + 4 + 2;
        std::fill(std::begin(start), std::end(start), none);
        std::fill(std::begin(end), std::end(end), none);
        std::fill(std::begin(guard), std::end(guard), none);
        for (auto &pair : published)
            pair = {none, none};
    }

    support::rxp_result evaluate() {
        support::rxp_result outcome;
        int at = find();
        outcome.result = (at != failure) != (program[3] == 254);
        outcome.count = at != failure ? count : 0;
        outcome.gave_up = steps > limit;
        outcome.steps = steps;
        if (at != failure) {
            published[0].first = at;
            if (best == none) published[0].second = at;
        }
        std::copy(std::begin(published), std::end(published), outcome.pairs);
        return outcome;
    }

  private:
    const std::string &subject;
    const unsigned char *program;
    const unsigned char *ranges;
    long limit;
    long steps = 0;
    int best = none;
    int highest = 0;
    int count = 0;
    int start[10];
    int end[10];
    int guard[256];
    std::pair<int, int> published[10];

    int length() const {
        return static_cast<int>(subject.size());
    }

    int byte(int at) const {
        return at < length() ? static_cast<unsigned char>(
                                   subject[static_cast<size_t>(at)])
                             : 0;
    }

    bool is(int at, int bits) const {
        return (re_type[byte(at)] & bits) != 0;
    }

    int find() {
        int first = program[1];
        int opcode = program[4 * first];
        if (opcode == 12) return match(0, first) != failure ? 0 : failure;
        for (int at = 0; at <= length(); at++) {
            if (opcode == 1 && byte(at) != program[4 * first + 1]) continue;
            if (match(at, first) != failure) return at;
        }
        return failure;
    }

    int record(int at) {
        if (at <= best) return at;
        published[0].second = at;
        for (int k = 1; k <= highest; k++)
            published[k] = {start[k], end[k]};
        count = highest;
        best = at;
        return at;
    }

    bool is_identifier_start(int at) const {
        return is(at, 0x61) && (at == 0 || !is(at - 1, 0x63));
    }

    bool in_pairs(const unsigned char *state, int c) const {
        const unsigned char *pair = ranges + 2 * (state[3] - 1);
        for (int i = 0; i < state[1]; i++, pair += 2) {
            if (pair[0] <= c && c <= pair[1]) return true;
        }
        return false;
    }

    int branch(int at, int number, bool zero_width) {
        const unsigned char *state = program + 4 * number;
        if (guard[number] == at) return zero_width ? record(at) : failure;
        int saved = guard[number];
        guard[number] = at;
        int result = match(at, state[2]);
        if ((result == failure || result != length()) && state[3] != state[2]) {
            int other = match(at, state[3]);
            if (other > result) result = other;
        }
        guard[number] = saved;
        if (result != failure) record(result);
        return result;
    }

    int match(int at, int number) {
        bool zero_width = false;
        for (;;) {
            if (++steps > limit) return failure;
            const unsigned char *state = program + 4 * number;
            int argument = state[1];
            int c = byte(at);
            switch (state[0]) {
                case 1:  // Mch
                    if (c != argument) return failure;
                    at++;
                    break;
                case 19:  // Dch
                    if (c != argument && !(is(at, 0x20) && c + 32 == argument))
                        return failure;
                    at++;
                    break;
                case 2:  // Man
                    if (at == length()) return failure;
                    at++;
                    break;
                case 3:  // Mfr
                    if (re_type[c] != 0) return failure;
                    at++;
                    break;
                case 4:  // Mdi
                    if (!is(at, 0x02)) return failure;
                    at++;
                    break;
                case 5:  // Msp
                    if (!is(at, 0x10)) return failure;
                    while (is(at, 0x10))
                        at++;
                    break;
                case 20:  // Mss
                    while (is(at, 0x10))
                        at++;
                    break;
                case 24:  // Mti
                    if (at == length() || is(at, 0x10)) return failure;
                    at++;
                    break;
                case 7:  // Mis
                    if (!is_identifier_start(at)) return failure;
                    zero_width = true;
                    break;
                case 6:  // Mie
                    if (at == 0 || is(at, 0x63) || !is(at - 1, 0x63))
                        return failure;
                    zero_width = true;
                    break;
                case 9:  // Mid
                    if (!is_identifier_start(at)) return failure;
                    at++;
                    while (is(at, 0x63))
                        at++;
                    break;
                case 16:  // Mrn
                    if (at == length() || !in_pairs(state, c)) return failure;
                    at++;
                    break;
                case 17:  // Mnr
                    if (at == length() || in_pairs(state, c)) return failure;
                    at++;
                    break;
                case 12:  // Mst
                    if (at != 0) return failure;
                    zero_width = true;
                    break;
                case 13:  // Mls
                    if (at != length()) return failure;
                    zero_width = true;
                    break;
                case 14:  // Msr
                    start[argument] = at;
                    end[argument] = none;
                    highest = std::max(highest, argument);
                    zero_width = true;
                    break;
                case 15:  // Mer
                    end[argument] = at;
                    zero_width = true;
                    break;
                case 8:  // Mre
                    if (start[argument] != none && end[argument] != none) {
                        for (int i = start[argument]; i < end[argument];
                             i++, at++) {
                            if (at == length() || byte(i) != byte(at))
                                return failure;
                        }
                    }
                    break;
                case 18:  // Mnu
                    zero_width = true;
                    break;
                case 21:  // Fen
                    return length();
                case 22:  // Fch
                    if (at == length()) return failure;
                    at++;
                    while (at < length() && byte(at) != argument)
                        at++;
                    if (at == length()) return failure;
                    break;
                case 23:  // Fre
                    if (at == length()) return failure;
                    if (start[argument] == none || end[argument] == none ||
                        start[argument] >= end[argument])
                        return failure;
                    while (at < length() && byte(at) != byte(start[argument]))
                        at++;
                    if (at == length()) return failure;
                    break;
                case 11:  // END
                    return record(at);
                case 10:  // Nop
                    return branch(at, number, zero_width);
            }
            number = state[2];
        }
    }
};

int offset(const char *position, const std::string &subject) {
    return position == nullptr ? none
                               : static_cast<int>(position - subject.c_str());
}

void print(std::ostream &out, const support::rxp_result &result) {
    out << result.result << " count " << result.count;
    for (int k = 0; k <= result.count; k++) {
        out << " " << result.pairs[k].first << "-" << result.pairs[k].second;
    }
}

}  // namespace

namespace support {

rxp_result rxp_by_the_rules(const std::string &subject,
                            const unsigned char *program, long max_steps) {
    return model(subject, program, max_steps).evaluate();
}

namespace {

void publish(rxp_result *outcome, const std::string &subject) {
    outcome->count = matches.count;
    for (int k = 0; k <= matches.count; k++) {
        outcome->pairs[k] = {offset(matches.pair[k].start, subject),
                             offset(matches.pair[k].end, subject)};
    }
}

}  // namespace

rxp_result rxp_by_the_library(const std::string &subject,
                              const unsigned char *program) {
    rxp_result outcome;
    outcome.result = rxppeval(subject.c_str(), program);
    publish(&outcome, subject);
    return outcome;
}

rxp_result rxp_by_the_memory(const std::string &subject,
                             const unsigned char *program) {
    tovan::rxp_machine machine;
    matches.count = 0;
    tovan::rxp_start(&machine, subject.c_str(), program, nullptr);
    tovan::rxp_remember(&machine);
    const char *last = subject.c_str() + subject.size();
    if (rxpcaret(program) == 1) last = subject.c_str();
    const char *at = subject.c_str();
    while (at <= last && !tovan::rxp_attempt(&machine, at))
        at++;
    tovan::rxp_stop(&machine);

    rxp_result outcome;
    outcome.result = (at <= last) != (rxpinvert(program) == 1);
    matches.pair[0].start = at <= last ? at : nullptr;
    if (machine.found.best == nullptr)
        matches.pair[0].end = matches.pair[0].start;
    publish(&outcome, subject);
    return outcome;
}

rxp_result rxp_by_the_automaton(const std::string &subject,
                                const unsigned char *program) {
    tovan::rxp_plan *plan = tovan::rxp_plan_for(program);
    if (plan == nullptr) plan = tovan::rxp_plan_for(program);
    if (!plan->is_plain || !plan->is_regular)
        return rxp_by_the_library(subject, program);
    matches.count = 0;
    matches.pair[0] = {};
    const char *text = subject.c_str();
    tovan::rxp_answer answer =
        tovan::rxp_automaton_search(plan, text, text + subject.size());
    if (answer == tovan::rxp_answer::gave_up ||
        answer == tovan::rxp_answer::undecided)
        return rxp_by_the_library(subject, program);
    rxp_result outcome;
    outcome.result =
        (answer == tovan::rxp_answer::match) != (rxpinvert(program) == 1);
    publish(&outcome, subject);
    return outcome;
}

std::string rxp_difference(const rxp_result &rules, const rxp_result &library) {
    bool same = rules.result == library.result && rules.count == library.count;
    for (int k = 0; same && k <= rules.count; k++)
        same = rules.pairs[k] == library.pairs[k];
    if (same) return "";
    std::ostringstream out;
    out << "rules: ";
    print(out, rules);
    out << ", library: ";
    print(out, library);
    return out.str();
}

}  // namespace support
