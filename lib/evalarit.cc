// evalarit.cc: integer arithmetic by operator precedence.
#include "evalarit.h"

#include "ident.h"
#include "private_opers.h"

#include <stddef.h>
#include <stdint.h>

// One pass from left to right with two stacks. A number goes to the value
// stack at once. Every token, a value too, then arrives at the operator stack
// with its input precedence and meets the stack precedence of the top:
//   greater   it is pushed and waits
//   less      the top is applied to the values and popped; it meets the next
//   equal     the two are a pair: "(" and ")", "?" and ":", start and end
// In "1+2*3", "*" (24) is pushed over the waiting "+" (23); the end (0) then
// applies "*" and "+" and meets the bottom entry. In "1-2-3" the second "-"
// (22) finds the first (23) and applies it: left to right.
//
// There is no grammar besides: "1 ()" is 1 and "5 ~" is -6, because nothing
// in the precedences objects.

namespace {

using namespace tovan;

constexpr size_t value_limit = 21;
constexpr size_t operator_limit = 20;
constexpr size_t spare_values = 3;  // an empty stack less two operands

constexpr char finished[] = "";  // the end of the text has met the start
constexpr char syntax_error[] = "syntax error";
constexpr char operator_overflow[] = "operator stack overflow";
constexpr char value_overflow[] = "value stack overflow";
constexpr char division_by_zero[] = "division by zero";
constexpr char logic_error[] = "logic error - bitch to ko";

using text_pointer = const unsigned char *;

// The digits after "0x".
text_pointer read_hexadecimal(text_pointer next, uint32_t *result) {
    uint32_t sum = 0;
    for (;; ++next) {
        unsigned letter = (*next | 0x20u) - 'a';
        unsigned digit = *next - unsigned{'0'};
        if (letter < 6) digit = letter + 10;
        if (digit > 15 || (digit > 9 && letter >= 6)) break;
        sum = sum * 16 + digit;
    }
    *result = sum;
    return next;
}

// Deliberate: 8 and 9 count at face value after a leading 0 too (test
// octal_numbers_take_8_and_9).
text_pointer read_digits(text_pointer next, unsigned radix, uint32_t *sum) {
    for (unsigned digit; (digit = *next - unsigned{'0'}) < 10; ++next)
        *sum = *sum * radix + digit;
    return next;
}

// Reads on behind the first digit, which *result holds.
text_pointer read_number(text_pointer next, uint32_t *result) {
    if (*result != 0) return read_digits(next, 10, result);
    if ((*next | 0x20) == 'x') return read_hexadecimal(next + 1, result);
    return read_digits(next, 8, result);
}

int32_t as_signed(uint32_t number) {
    return static_cast<int32_t>(number);
}

// Arithmetic: the sign moves in.
uint32_t shifted_right(uint32_t number, uint32_t places) {
    return static_cast<uint32_t>(as_signed(number) >> places);
}

// Chosen: the most negative number divided by -1 is itself, remainder 0, as
// wrapping arithmetic has it.
uint32_t quotient(int32_t a, int32_t b) {
    if (b == -1) return -static_cast<uint32_t>(a);
    return static_cast<uint32_t>(a / b);
}

uint32_t remainder(int32_t a, int32_t b) {
    if (b == -1) return 0;
    return static_cast<uint32_t>(a % b);
}

// Applies an operator to its operands, the left one at `a`, where the result
// goes. One table, as a switch.
const char *compute(uint8_t which, uint32_t *a) {
    // clang-format off
    switch (which) {
        case bit_and:      *a &= a[1]; break;
        case bit_or:       *a |= a[1]; break;
        case bit_xor:      *a ^= a[1]; break;
        case logical_and:  *a = *a != 0 && a[1] != 0; break;
        case logical_or:   *a = *a != 0 || a[1] != 0; break;
        case equal:        *a = *a == a[1]; break;
        case not_equal:    *a = *a != a[1]; break;
        case less:         *a = as_signed(*a) < as_signed(a[1]); break;
        case greater:      *a = as_signed(*a) > as_signed(a[1]); break;
        case not_greater:  *a = as_signed(*a) <= as_signed(a[1]); break;
        case not_less:     *a = as_signed(*a) >= as_signed(a[1]); break;
        case shift_left:   *a <<= a[1] & 31; break;
        case shift_right:  *a = shifted_right(*a, a[1] & 31); break;
        case add:          *a += a[1]; break;
        case subtract:     *a -= a[1]; break;
        case multiply:     *a *= a[1]; break;
        case negate:       *a = -*a; break;
        case complement:   *a = ~*a; break;
        case logical_not:  *a = *a == 0; break;
        case conditional:  *a = *a != 0 ? a[1] : a[2]; break;
        case plus_sign:    break;
        case value:        break;
        case divide:
            if (a[1] == 0) return division_by_zero;
            *a = quotient(as_signed(*a), as_signed(a[1]));
            break;
        case remainder_of:
            if (a[1] == 0) return division_by_zero;
            *a = remainder(as_signed(*a), as_signed(a[1]));
            break;
        default:  // a "?" or ":" whose other half is missing
            return syntax_error;
    }
    // clang-format on
    return nullptr;
}

// Values are kept unsigned: they wrap around. Their first entries are never
// used: the top may run down to them.
struct stacks {
    uint32_t values[spare_values + value_limit];
    uint8_t operators[operator_limit];
};

// One evaluation. The stacks lie apart, so that all this fits registers.
struct evaluation {
    text_pointer next;
    const uint8_t *starts_here;
    uint32_t *value_top;
    uint8_t *top;
    stacks *waiting;
    const int *variables;

    const char *run();
    bool read_operand(uint8_t kind, uint32_t *operand);
    const char *take_operand(uint8_t kind);
    const char *open_behind_value();
    uint8_t read_operator(uint8_t kind);
    const char *arrive(uint8_t kind);
    const char *pair_with_top();
    const char *push(uint8_t kind);
};

const char *evaluation::push(uint8_t kind) {
    if (top == &waiting->operators[operator_limit - 1])
        return operator_overflow;
    *++top = kind;
    return nullptr;
}

// Reads the number or variable whose first character is behind us.
bool evaluation::read_operand(uint8_t kind, uint32_t *operand) {
    unsigned char first = next[-1];
    if (kind == digit) {
        *operand = first - uint32_t{'0'};
        next = read_number(next, operand);
        return true;
    }
    if (kind != letter || variables == nullptr) return false;
    *operand = static_cast<uint32_t>(variables[first - 'a']);
    return true;
}

// A value takes its place on the operator stack in name only, because all
// tokens but "(" would find it and pop it again. Where it comes late it meets
// a waiting value, unless parentheses stand between: "(1) 2" goes on.
const char *evaluation::take_operand(uint8_t kind) {
    bool meets_value = false;
    if (kind == late) {
        meets_value = starts_here == starts.of[after_value] || *top == value;
        kind = starts.of[operand_expected][next[-1]];
    }
    uint32_t operand;
    if (!read_operand(kind, &operand)) return syntax_error;
    if (value_top == &waiting->values[spare_values + value_limit - 1])
        return value_overflow;
    *++value_top = operand;
    if (meets_value) return syntax_error;
    if (top == &waiting->operators[operator_limit - 1])
        return operator_overflow;
    starts_here = starts.of[after_value];
    return nullptr;
}

// "(" behind a value, which now really waits; its room has been checked.
const char *evaluation::open_behind_value() {
    starts_here = starts.of[operand_expected];
    *++top = value;
    return push(open_paren);
}

// The token that starts with the character before `next`.
uint8_t evaluation::read_operator(uint8_t kind) {
    starts_here = starts.of[operand_expected];
    if (kind < ampersand) return kind;
    if (kind == closing) {
        starts_here = starts.of[after_paren];
        return close_paren;
    }
    const uint8_t *form = forms[kind - ampersand];
    uint8_t token = form[*next == next[-1] ? 1 : *next == '=' ? 2 : 0];
    next += token != form[0];
    return token;
}

const char *evaluation::pair_with_top() {
    switch (*top) {
        case open_paren:
            --top;
            return nullptr;
        case question:
            *top = conditional;
            return nullptr;
        case end_of_text:
            return finished;
        default:
            return logic_error;
    }
}

const char *evaluation::arrive(uint8_t kind) {
    unsigned input = packed.input[kind];
    unsigned stack;
    while ((stack = packed.stack[*top]) > input) {
        uint8_t which = *top--;
        value_top -= packed.operands[which];
        if (value_top < &waiting->values[spare_values]) return syntax_error;
        if (const char *message = compute(which, value_top)) return message;
    }
    return stack < input ? push(kind) : pair_with_top();
}

const char *evaluation::run() {
    const char *message = nullptr;
    while (message == nullptr) {
        uint8_t kind;
        do
            kind = starts_here[*next++];
        while (kind == blank);
        if (kind < blank) {
            kind = read_operator(kind);
            message = kind == wrong ? syntax_error : arrive(kind);
        } else if (kind == calling) {
            message = open_behind_value();
        } else {
            message = take_operand(kind);
        }
    }
    return message;
}

}  // namespace

const char *evalarith(const char *text, int *result, const int *variables) {
    stacks waiting;
    waiting.operators[0] = end_of_text;
    evaluation each = {.next = reinterpret_cast<text_pointer>(text),
                       .starts_here = starts.of[operand_expected],
                       .value_top = &waiting.values[spare_values - 1],
                       .top = waiting.operators,
                       .waiting = &waiting,
                       .variables = variables};
    const char *message = each.run();
    if (message != finished) return message;
    if (each.value_top != &waiting.values[spare_values]) return syntax_error;
    *result = as_signed(*each.value_top);
    return nullptr;
}

TOVAN_IDENT(evalarit, "8.4", "26/11/21")
