// private_opers.h (private): the operators of the arithmetic and how
// characters name them.
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_OPERS_H
#define TOVAN_PRIVATE_OPERS_H

#include <stddef.h>
#include <stdint.h>

namespace [[gnu::visibility("hidden")]] tovan {

// In the order of their codes.
enum token : uint8_t {
    bit_and,
    logical_and,
    close_paren,
    colon,
    bit_xor,
    divide,
    end_of_text,
    equal,
    not_less,
    greater,
    not_greater,
    shift_left,
    less,
    subtract,
    remainder_of,
    multiply,
    negate,
    not_equal,
    logical_not,
    value,
    open_paren,
    bit_or,
    logical_or,
    add,
    question,
    shift_right,
    complement,
    plus_sign,
    conditional,  // a ":" that has met its "?"; it never arrives
};

constexpr uint8_t never = 255;  // operands of a token that is not applied

struct oper {
    uint8_t code;
    uint8_t input;     // precedence of the token that arrives
    uint8_t stack;     // its precedence while it waits
    uint8_t operands;  // beyond the first
};

// clang-format off
constexpr oper opers[] = {
    {bit_and,      14, 15, 1},
    {logical_and,   8,  9, 1},
    {close_paren,   1,  1, never},
    {colon,         3,  5, 2},
    {bit_xor,      12, 13, 1},
    {divide,       24, 25, 1},
    {end_of_text,   0,  0, never},
    {equal,        16, 17, 1},
    {not_less,     18, 19, 1},
    {greater,      18, 19, 1},
    {not_greater,  18, 19, 1},
    {shift_left,   20, 21, 1},
    {less,         18, 19, 1},
    {subtract,     22, 23, 1},
    {remainder_of, 24, 25, 1},
    {multiply,     24, 25, 1},
    {negate,       27, 26, 0},
    {not_equal,    16, 17, 1},
    {logical_not,  27, 26, 0},
    {value,        30, 30, never},
    {open_paren,   31,  1, never},
    {bit_or,       10, 11, 1},
    {logical_or,    6,  7, 1},
    {add,          22, 23, 1},
    {question,      4,  3, 2},
    {shift_right,  20, 21, 1},
    {complement,   27, 26, 0},
    {plus_sign,    27, 26, 0},
    {conditional,   3,  5, 2},
};
// clang-format on

consteval bool rows_stand_at_their_codes() {
    size_t row = 0;
    for (const oper &each : opers) {
        if (each.code != row++) return false;
    }
    return true;
}
static_assert(rows_stand_at_their_codes());

// What a character starts: one of the tokens above, or one of these.
enum start : uint8_t {
    ampersand = conditional + 1,  // from here on: perhaps two characters
    bar,
    equals_sign,
    exclamation,
    left_angle,
    right_angle,
    closing,  // ")"
    blank,    // from here on: no operator
    digit,
    letter,
    late,     // a digit or letter where an operator is due
    calling,  // "(" behind a value
    wrong,
};

// What came last decides what the next character starts.
enum state : uint8_t { operand_expected, after_paren, after_value, states };

consteval uint8_t start_of(int c, int after) {
    constexpr char characters[] = " \t\n&|=!<>*/%^~?:)";
    constexpr uint8_t kinds[] = {
        blank,       blank,      blank,       ampersand, bar,    equals_sign,
        exclamation, left_angle, right_angle, multiply,  divide, remainder_of,
        bit_xor,     complement, question,    colon,     closing};
    static_assert(sizeof kinds == sizeof characters - 1);
    bool is_digit = c >= '0' && c <= '9';
    bool is_letter = c >= 'a' && c <= 'z';
    if ((is_digit || is_letter) && after != operand_expected) return late;
    if (is_digit) return digit;
    if (is_letter) return letter;
    if (c == '\0') return end_of_text;
    if (c == '(' && after == after_value) return calling;
    if (c == '(') return open_paren;
    if (c == '+') return after == operand_expected ? plus_sign : add;
    if (c == '-') return after == operand_expected ? negate : subtract;
    for (size_t i = 0; i < sizeof kinds; ++i) {
        if (characters[i] == c) return kinds[i];
    }
    return wrong;
}

struct start_table {
    uint8_t of[states][256];
    consteval start_table() : of() {
        for (int after = 0; after < states; ++after) {
            for (int c = 0; c < 256; ++c)
                of[after][c] = start_of(c, after);
        }
    }
};
constexpr start_table starts;

// The token of such a first character alone, doubled, and with "=" behind.
constexpr uint8_t forms[][3] = {
    {bit_and, logical_and, bit_and},        // &
    {bit_or, logical_or, bit_or},           // |
    {wrong, equal, equal},                  // =
    {logical_not, logical_not, not_equal},  // !
    {less, shift_left, not_greater},        // <
    {greater, shift_right, not_less},       // >
};

// What the stacks need of an operator, packed from its row. Precedences are
// doubled, to have room between them. Chosen: a waiting ":" stands between an
// arriving ":" (3) and an arriving "?" (4) instead of at 5, so that
// a ? b : c ? d : e nests to the right. Nothing else arrives with 4 or 5.
struct packed_table {
    uint8_t input[ampersand];
    uint8_t stack[ampersand];
    uint8_t operands[ampersand];
    consteval packed_table() : input(), stack(), operands() {
        for (const oper &each : opers) {
            input[each.code] = static_cast<uint8_t>(2 * each.input);
            stack[each.code] = static_cast<uint8_t>(2 * each.stack);
            operands[each.code] = each.operands == never ? 0 : each.operands;
        }
        stack[colon] = stack[conditional] = input[colon] + 1;
    }
};
constexpr packed_table packed;
static_assert(packed.input[question] > packed.stack[colon]);

}  // namespace tovan

#endif
