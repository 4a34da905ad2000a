// rxpneedle.cc: what every match of a program has in common.
//
// A state is required when no way leads around it. Literals that are required
// and follow one another make a text that every match contains:
//
//     \([a-z]+\)/\([a-z]+\)\.c    "/" and ".c"
//     lib.*\.a$                   "lib", and ".a" at the end of the subject
//
// The text with the rarest bytes is worth looking for. What may stand around
// it is known as well: in `[a-z]+=[0-9]+` a "=" between two blanks is none.
#include "rxpcomp.h"

#include "ident.h"
#include "private_rxp.h"
#include "private_rxpplan.h"

#include <string.h>

using tovan::rxp_needle;
using tovan::rxp_set;
using tovan::rxp_state;

namespace {

// What the analysis walks over.
struct program_view {
    const unsigned char *program;
    const rxp_state *states;
    const tovan::rxp_reach &reach;
    int first;
    int end;
    rxp_set required;
};

bool is_success(const rxp_state &state) {
    return state.opcode == tovan::rxp_end || state.opcode == tovan::rxp_rest;
}

bool ends_without(const program_view &v, int left_out) {
    unsigned char waiting[2 * tovan::rxp_max_states + 1];
    int n_waiting = 0;
    rxp_set seen = {};
    waiting[n_waiting++] = static_cast<unsigned char>(v.first);
    while (n_waiting > 0) {
        unsigned char number = waiting[--n_waiting];
        if (number == left_out || rxp_has(seen, number)) continue;
        rxp_add(&seen, number);
        const rxp_state &state = v.states[number];
        if (is_success(state)) return true;
        waiting[n_waiting++] = state.next;
        if (state.opcode == tovan::rxp_branch)
            waiting[n_waiting++] = state.alternative;
    }
    return false;
}

// Literals and "$" that no match can do without.
rxp_set required_states(const program_view &v) {
    rxp_set required = {};
    for (int i = 1; i < v.end; i++) {
        unsigned char opcode = v.states[i].opcode;
        bool is_of_use =
            opcode == tovan::rxp_literal || opcode == tovan::rxp_subject_end;
        if (is_of_use && !ends_without(v, i))
            rxp_add(&required, static_cast<unsigned>(i));
    }
    return required;
}

bool is_required_literal(const program_view &v, int number) {
    return v.states[number].opcode == tovan::rxp_literal &&
           rxp_has(v.required, static_cast<unsigned>(number));
}

bool is_required_end(const program_view &v, int number) {
    return v.states[number].opcode == tovan::rxp_subject_end &&
           rxp_has(v.required, static_cast<unsigned>(number));
}

// ---- neighbours ---------------------------------------------------------

// The bytes that a state may consume last; empty when it consumes none.
rxp_set last_bytes(const program_view &v, const rxp_state &state) {
    rxp_set set = rxp_first_bytes(v.program, state);
    if (state.opcode == tovan::rxp_identifier) {
        for (unsigned c = 1; c < 256; c++) {
            if ((re_type[c] & tovan::re_identifier) != 0) rxp_add(&set, c);
        }
    }
    return set;
}

rxp_set bytes_before(const program_view &v, int number) {
    rxp_set set = {};
    for (int i = 1; i < v.end; i++) {
        const rxp_state &state = v.states[i];
        if (rxp_has(v.reach[state.next], static_cast<unsigned>(number)))
            rxp_add_all(&set, last_bytes(v, state));
    }
    return set;
}

// What may follow the state: 0 is the end of the subject.
rxp_set bytes_behind(const program_view &v, const rxp_state &state) {
    tovan::rxp_outlook outlook = rxp_look(v.program, v.reach[state.next]);
    return outlook.ends ? tovan::rxp_any_byte : outlook.bytes;
}

bool may_start(const program_view &v, int number) {
    return rxp_has(v.reach[v.first], static_cast<unsigned>(number));
}

// ---- texts --------------------------------------------------------------

// The last state of the run of required literals that starts here.
int last_of_text(const program_view &v, int first) {
    int last = first;
    for (int n = 1; n < rxp_needle::max_length; n++) {
        int next = v.states[last].next;
        if (!is_required_literal(v, next)) break;
        last = next;
    }
    return last;
}

// How seldom a byte is in texts that people write.
int rarity(unsigned char byte) {
    if (byte == ' ') return 0;
    if (strchr("etaoinsrhld", byte) != nullptr) return 1;
    if (strchr("cumpfgwyb", byte) != nullptr) return 2;
    if ((re_type[byte] & tovan::re_lower) != 0) return 3;
    return (re_type[byte] & tovan::re_upper) != 0 ? 4 : 5;
}

int total_rarity(const rxp_needle &needle) {
    int sum = 0;
    for (int i = 0; i < needle.length; i++)
        sum += rarity(static_cast<unsigned char>(needle.text[i]));
    return sum;
}

tovan::rxp_few just(char byte) {
    auto b = static_cast<unsigned char>(byte);
    return {{b, b, b}};
}

void choose_pair(rxp_needle *needle) {
    int best = -1;
    for (int i = 0; i + 1 < needle->length; i++) {
        const char *text = needle->text + i;
        int sum = rarity(static_cast<unsigned char>(text[0])) +
                  rarity(static_cast<unsigned char>(text[1]));
        if (sum <= best) continue;
        best = sum;
        needle->rare = i;
        needle->pair = {just(text[0]), just(text[1])};
    }
}

rxp_needle text_between(const program_view &v, int first, int last) {
    rxp_needle needle = {};
    for (int state = first;; state = v.states[state].next) {
        needle.text[needle.length++] =
            static_cast<char>(v.states[state].argument);
        if (state == last) break;
    }
    needle.is_first = may_start(v, first);
    needle.before = bytes_before(v, first);
    needle.after = bytes_behind(v, v.states[last]);
    choose_pair(&needle);
    return needle;
}

void find_texts(const program_view &v, tovan::rxp_filters *filters) {
    for (int i = 1; i < v.end; i++) {
        if (!is_required_literal(v, i)) continue;
        int last = last_of_text(v, i);
        rxp_needle text = text_between(v, i, last);
        bool is_tail = is_required_end(v, v.states[last].next);
        rxp_needle *kept = is_tail ? &filters->tail : &filters->needle;
        if (total_rarity(text) > total_rarity(*kept)) *kept = text;
    }
}

// ---- where a match may start and end ------------------------------------

bool takes_more_than_one(const rxp_state &state) {
    return state.opcode == tovan::rxp_white_run ||
           state.opcode == tovan::rxp_white_run_or_none ||
           state.opcode == tovan::rxp_identifier ||
           state.opcode == tovan::rxp_up_to_literal;
}

// An attempt that fails leaves the registers that it has written. A position
// may be left out only if a match further on writes the same ones anyway.
bool may_skip(const program_view &v, const tovan::rxp_outlook &outlook) {
    const rxp_state &behind = v.states[rxp_straight_end(v.states, v.first)];
    bool always_writes = behind.opcode != tovan::rxp_white_run_or_none &&
                         !rxp_is_empty(rxp_first_bytes(v.program, behind));
    return !outlook.ends && (!outlook.writes || always_writes);
}

rxp_set second_bytes(const program_view &v) {
    rxp_set set = {};
    rxp_for_each(v.reach[v.first], [&](unsigned number) {
        const rxp_state &state = v.states[number];
        rxp_set first = rxp_first_bytes(v.program, state);
        if (rxp_is_empty(first)) return;
        tovan::rxp_outlook outlook = rxp_look(v.program, v.reach[state.next]);
        bool is_free =
            takes_more_than_one(state) || outlook.ends || outlook.writes;
        rxp_add_all(&set, is_free ? tovan::rxp_any_byte : outlook.bytes);
    });
    return set;
}

// Whether there are at most three members; then these are they.
bool take_few(const rxp_set &set, tovan::rxp_few *few) {
    unsigned count = 0;
    rxp_for_each(set, [&](unsigned member) {
        if (count < 3) few->bytes[count] = static_cast<unsigned char>(member);
        count++;
    });
    if (count == 0 || count > 3) return false;
    for (; count < 3; count++)
        few->bytes[count] = few->bytes[0];
    return true;
}

void find_start(const program_view &v, bool is_anchored,
                tovan::rxp_filters *filters) {
    tovan::rxp_outlook outlook = rxp_look(v.program, v.reach[v.first]);
    bool skips = is_anchored ? !outlook.ends : may_skip(v, outlook);
    filters->first = skips ? outlook.bytes : tovan::rxp_any_byte;
    filters->second = skips ? second_bytes(v) : tovan::rxp_any_byte;
    if (rxp_has(filters->first, 0)) return;
    filters->has_pair = take_few(filters->first, &filters->pair.first) &&
                        take_few(filters->second, &filters->pair.second);
}

void find_end(const program_view &v, tovan::rxp_filters *filters) {
    for (int i = 1; i < v.end; i++) {
        if (!is_required_end(v, i)) continue;
        filters->is_at_end = true;
        filters->last = bytes_before(v, i);
        if (may_start(v, i)) rxp_add(&filters->last, 0);
    }
}

bool is_one_text(const program_view &v, const rxp_needle &needle) {
    return needle.length > 0 && needle.length == v.end - 1 && v.first == 1;
}

}  // namespace

void tovan::rxp_find_filters(rxp_plan *plan, const rxp_reach &reach) {
    const unsigned char *program = plan->program;
    program_view v = {program,
                      rxp_states(program),
                      reach,
                      rxp_first_state(program),
                      rxp_end_state(program),
                      {}};
    v.required = required_states(v);
    plan->filters = {};
    find_start(v, plan->is_anchored, &plan->filters);
    find_end(v, &plan->filters);
    find_texts(v, &plan->filters);
    plan->is_literal = is_one_text(v, plan->filters.needle);
}

TOVAN_IDENT(rxpneedle, "8.4", "26/11/21")
