// evalarit_test.cc: integer arithmetic.
#include <gtest/gtest.h>
#include <limits.h>
#include <stdint.h>
#include <tovan/evalarit.h>
#include <random>
#include <string>
#include <vector>

namespace {

// The value, or the message.
std::string outcome_of(const std::string &text,
                       const int *variables = nullptr) {
    int result = 12345;
    const char *message = evalarith(text.c_str(), &result, variables);
    if (message == nullptr) return std::to_string(result);
    EXPECT_EQ(result, 12345) << text << ": touched on failure";
    return message;
}

struct row {
    std::string text;
    std::string outcome;
};

void expect_rows(const std::vector<row> &rows) {
    for (const row &each : rows)
        EXPECT_EQ(outcome_of(each.text), each.outcome) << each.text;
}

std::string repeated(const std::string &text, int times) {
    std::string result;
    for (int i = 0; i < times; ++i)
        result += text;
    return result;
}

const char overflow_of_operators[] = "operator stack overflow";
const char overflow_of_values[] = "value stack overflow";

TEST(evalarith, every_operator_by_itself) {
    expect_rows({
        {"12 & 10", "8"},   {"12 | 10", "14"},  {"12 ^ 10", "6"},
        {"2 && 3", "1"},    {"2 && 0", "0"},    {"0 && 2", "0"},
        {"0 || 3", "1"},    {"2 || 0", "1"},    {"0 || 0", "0"},
        {"3 == 3", "1"},    {"3 == 4", "0"},    {"3 != 3", "0"},
        {"3 != 4", "1"},    {"3 < 4", "1"},     {"4 < 4", "0"},
        {"5 > 4", "1"},     {"4 > 4", "0"},     {"4 <= 4", "1"},
        {"5 <= 4", "0"},    {"4 >= 4", "1"},    {"3 >= 4", "0"},
        {"3 << 4", "48"},   {"48 >> 4", "3"},   {"7 + 8", "15"},
        {"7 - 8", "-1"},    {"7 * 8", "56"},    {"7 / 2", "3"},
        {"7 % 4", "3"},     {"-3", "-3"},       {"+3", "3"},
        {"~3", "-4"},       {"!3", "0"},        {"!0", "1"},
        {"1 ? 2 : 3", "2"}, {"0 ? 2 : 3", "3"}, {"-1 ? 2 : 3", "2"},
    });
}

TEST(evalarith, comparisons_are_signed) {
    expect_rows({{"-1 < 1", "1"},
                 {"0xffffffff > 0", "0"},
                 {"-1 <= 0", "1"},
                 {"0x80000000 >= 0", "0"}});
}

TEST(evalarith, precedences_are_those_of_c) {
    expect_rows({
        {"1 + 2 * 3", "7"},
        {"1 << 2 + 3", "32"},
        {"1 < 2 << 3", "1"},
        {"2 == 1 < 3", "0"},
        {"3 & 2 == 2", "1"},
        {"1 ^ 3 & 2", "3"},
        {"4 | 6 ^ 2", "4"},
        {"1 && 4 | 0", "1"},
        {"1 || 0 && 0", "1"},
        {"0 || 0 ? 1 : 2", "2"},
        {"-2 * 3", "-6"},
        {"~1 + 1", "-1"},
        {"!1 + 1", "1"},
        {"(1 + 2) * 3", "9"},
    });
}

TEST(evalarith, binary_operators_associate_to_the_left) {
    expect_rows({{"10 - 3 - 2", "5"},
                 {"100 / 10 / 5", "2"},
                 {"100 / 10 * 5", "50"},
                 {"1 << 2 << 3", "32"},
                 {"3 > 2 > 1", "0"},
                 {"1 == 1 == 1", "1"}});
}

TEST(evalarith, unary_operators_associate_to_the_right) {
    expect_rows({{"- -3", "3"},
                 {"--3", "3"},
                 {"!!5", "1"},
                 {"-~3", "4"},
                 {"~-3", "2"},
                 {"+-+3", "-3"}});
}

TEST(evalarith, a_sign_is_binary_behind_a_value_or_a_parenthesis) {
    expect_rows({{"2-3", "-1"},
                 {"2 - -3", "5"},
                 {"(2)-3", "-1"},
                 {"2*-3", "-6"},
                 {"(-3)", "-3"},
                 {"2+ +3", "5"},
                 {"2 ? -3 : 4", "-3"}});
}

TEST(evalarith, conditionals_nest_to_the_right) {
    expect_rows({{"1 ? 2 : 0 ? 3 : 4", "2"},
                 {"0 ? 2 : 0 ? 3 : 4", "4"},
                 {"0 ? 2 : 1 ? 3 : 4", "3"},
                 {"1 ? 0 ? 5 : 6 : 7", "6"},
                 {"1 ? 1 ? 5 : 6 : 7", "5"},
                 {"0 ? 1 ? 5 : 6 : 7", "7"},
                 {"1 ? 2 : 3 + 10", "2"},
                 {"(1 ? 2 : 3) + 10", "12"}});
}

TEST(evalarith, both_sides_are_always_evaluated) {
    expect_rows({{"0 && 1 / 0", "division by zero"},
                 {"1 || 1 / 0", "division by zero"},
                 {"1 ? 2 : 1 / 0", "division by zero"},
                 {"0 ? 1 % 0 : 2", "division by zero"}});
}

TEST(evalarith, division_truncates_toward_zero) {
    expect_rows({{"-7 / 2", "-3"},
                 {"7 / -2", "-3"},
                 {"-7 % 2", "-1"},
                 {"7 % -2", "1"},
                 {"8 / 0", "division by zero"},
                 {"8 % 0", "division by zero"}});
}

TEST(evalarith, the_most_negative_number_divided_by_minus_one_is_itself) {
    expect_rows({{"0x80000000 / -1", "-2147483648"},
                 {"0x80000000 % -1", "0"},
                 {"7 / -1", "-7"},
                 {"7 % -1", "0"}});
}

TEST(evalarith, shift_counts_use_their_low_five_bits) {
    expect_rows({{"1 << 33", "2"},
                 {"1 << 32", "1"},
                 {"1 << -1", "-2147483648"},
                 {"8 >> 33", "4"},
                 {"-8 >> 1", "-4"},
                 {"-1 >> 31", "-1"}});
}

TEST(evalarith, numbers_wrap_around) {
    expect_rows({{"2147483647 + 1", "-2147483648"},
                 {"-2147483648 - 1", "2147483647"},
                 {"65536 * 65536", "0"},
                 {"65535 * 65537", "-1"},
                 {"-0x80000000", "-2147483648"},
                 {"4294967295", "-1"},
                 {"4294967297", "1"},
                 {"0x1ffffffff", "-1"},
                 {"0777777777777", "-1"}});
}

TEST(evalarith, hexadecimal_numbers) {
    expect_rows({{"0x1F", "31"},
                 {"0Xab", "171"},
                 {"0xABCDEF", "11259375"},
                 {"0xabcdef", "11259375"},
                 {"0x", "0"},
                 {"0x + 1", "1"},
                 {"0x@", "syntax error"},
                 {"0xG", "syntax error"},
                 {"0x1:", "syntax error"}});
}

TEST(evalarith, octal_numbers_take_8_and_9) {
    expect_rows({{"017", "15"},
                 {"0", "0"},
                 {"00", "0"},
                 {"09", "9"},
                 {"08 + 1", "9"},
                 {"019", "17"},
                 {"0189", "137"}});
}

TEST(evalarith, a_number_ends_at_the_first_other_character) {
    int variables[26] = {};
    EXPECT_EQ(outcome_of("1a", variables), "syntax error");
    EXPECT_EQ(outcome_of("0x1g", variables), "syntax error");
    EXPECT_EQ(outcome_of("12+3", variables), "15");
    EXPECT_EQ(outcome_of("0b", variables), "syntax error");
}

TEST(evalarith, lower_case_letters_are_the_callers_variables) {
    int variables[26];
    for (int i = 0; i < 26; ++i)
        variables[i] = 100 + i;
    EXPECT_EQ(outcome_of("a", variables), "100");
    EXPECT_EQ(outcome_of("z-a", variables), "25");
    EXPECT_EQ(outcome_of("b*c", variables), std::to_string(101 * 102));
    EXPECT_EQ(outcome_of("A", variables), "syntax error");
    EXPECT_EQ(outcome_of("a"), "syntax error");
    EXPECT_EQ(outcome_of("1 + a"), "syntax error");
    variables[3] = INT_MIN;
    EXPECT_EQ(outcome_of("d", variables), "-2147483648");
}

// A character that applies what waits shows the division by zero; all others
// are refused before that, or at the end.
TEST(evalarith, only_these_characters_are_binary_operators) {
    const std::string binary = "%&)*+-/:<>?^|";
    int variables[26] = {};
    for (int c = 1; c < 256; ++c) {
        char character = static_cast<char>(c);
        bool applies = binary.find(character) != std::string::npos;
        EXPECT_EQ(
            outcome_of(std::string("1 / 0 ") + character + " 0", variables),
            applies ? "division by zero" : "syntax error")
            << c;
    }
}

TEST(evalarith, blank_tab_and_newline_are_skipped_and_no_others) {
    expect_rows({{" \t\n1\n+\t1 ", "2"},
                 {"1\r+1", "syntax error"},
                 {"1 +\v1", "syntax error"},
                 {"1 +\f1", "syntax error"}});
}

TEST(evalarith, two_character_operators_are_read_greedily) {
    expect_rows({{"1<2", "1"},
                 {"1<=2", "1"},
                 {"1<<2", "4"},
                 {"1<<=2", "syntax error"},
                 {"1< <2", "syntax error"},
                 {"1 = 1", "syntax error"},
                 {"1 === 1", "syntax error"},
                 {"1 =! 1", "syntax error"},
                 {"1 & & 1", "syntax error"},
                 {"1 &= 1", "syntax error"},
                 {"1 !== 1", "syntax error"},
                 {"!!1", "1"},
                 {"1&&!0", "1"},
                 {"1&~0", "1"},
                 {"5>-1", "1"},
                 {"5>=-1", "1"},
                 {"5>>-31", "2"}});
}

// clang-format off
const char *const no_expressions[] = {
    "", " ", "1 2", "1 a", "*", "1 *", "* 1", "1 + ", "(", ")", "()", "(1",
    "1)", "(1))", "1 ? 2", "1 : 2", "1 ? 2 :", "? 1 : 2", "1 ?", ":",
    "(1 ? 2) : 3", "1 ? (2 : 3)", "-", "~", "(1)(2)", "1 (2 : 3)",
    "0 ? 1 : 2 : 3", "1 1", "(1) 2",
};
// clang-format on

TEST(evalarith, what_is_not_an_expression_is_a_syntax_error) {
    for (const char *text : no_expressions)
        EXPECT_EQ(outcome_of(text), "syntax error") << text;
}

TEST(evalarith, a_second_stray_parenthesis_is_a_logic_error) {
    expect_rows({{"))", "logic error - bitch to ko"},
                 {"1 ) )", "logic error - bitch to ko"},
                 {"(1)))", "logic error - bitch to ko"},
                 {"1 ) 2 )", "logic error - bitch to ko"},
                 {"1)-2)", "logic error - bitch to ko"},
                 {")-2)", "syntax error"},
                 {"1 )", "syntax error"}});
}

TEST(evalarith, what_no_precedence_forbids_is_accepted) {
    expect_rows({{"1 ()", "1"},
                 {"5 ~", "-6"},
                 {"5 !", "0"},
                 {"() 1", "1"},
                 {"(1 2", "syntax error"},
                 {"(1) 2 +", "3"},
                 {"1 (2) *", "2"},
                 {"6 (2) /", "3"}});
}

TEST(evalarith, errors_of_a_token_come_before_pending_operators) {
    expect_rows({{"1 / 0 + =", "division by zero"},
                 {"1 / 0 =", "syntax error"},
                 {"1 / 0 @", "syntax error"},
                 {"1 / 0 A", "syntax error"},
                 {"1 / 0 2", "syntax error"},
                 {"1 / 0 + @", "division by zero"}});
}

TEST(evalarith, nineteen_parentheses_fit_and_the_twentieth_does_not) {
    EXPECT_EQ(outcome_of(repeated("(", 19)), "syntax error");
    EXPECT_EQ(outcome_of(repeated("(", 20)), overflow_of_operators);
    EXPECT_EQ(outcome_of(repeated("(", 18) + "1" + repeated(")", 18)), "1");
    EXPECT_EQ(outcome_of(repeated("(", 19) + "1"), overflow_of_operators);
    EXPECT_EQ(outcome_of(repeated("(", 17) + "1+1" + repeated(")", 17)), "2");
    EXPECT_EQ(outcome_of(repeated("(", 18) + "1+1"), overflow_of_operators);
    EXPECT_EQ(outcome_of(repeated("-", 18) + "1"), "1");
    EXPECT_EQ(outcome_of(repeated("-", 19) + "1"), overflow_of_operators);
    EXPECT_EQ(outcome_of(repeated("-", 20)), overflow_of_operators);
}

TEST(evalarith, a_value_before_a_parenthesis_keeps_its_entry) {
    EXPECT_EQ(outcome_of(repeated("1(", 9)), "syntax error");
    EXPECT_EQ(outcome_of(repeated("1(", 9) + "("), "syntax error");
    EXPECT_EQ(outcome_of(repeated("1(", 9) + "1("), overflow_of_operators);
    EXPECT_EQ(outcome_of(repeated("1(", 9) + "(("), overflow_of_operators);
    EXPECT_EQ(outcome_of(repeated("(", 18) + "1("), overflow_of_operators);
}

TEST(evalarith, twenty_one_values_fit_and_one_more_does_not) {
    EXPECT_EQ(outcome_of("1" + repeated("(1)", 20)), "syntax error");
    EXPECT_EQ(outcome_of("1" + repeated("(1)", 21)), overflow_of_values);
    EXPECT_EQ(outcome_of("1" + repeated("(1)", 20) + "+1"), overflow_of_values);
    EXPECT_EQ(outcome_of("1" + repeated("(1)", 20) + " 1"), overflow_of_values);
}

TEST(evalarith, long_texts_take_time_in_proportion) {
    std::string sum = "1";
    for (int i = 0; i < 300000; ++i)
        sum += " + 1";
    EXPECT_EQ(outcome_of(sum), "300001");
    EXPECT_EQ(outcome_of(std::string(1000000, '9')), outcome_of("-1"));
}

// --- second opinions

// Expressions of C with their values: a tree is written and computed.
struct grown {
    std::string text;
    uint32_t value;
    int precedence;
};

class grower {
  public:
    explicit grower(unsigned seed) : random_(seed) {
    }

    // False when the tree divides by zero.
    bool divides_by_zero() const {
        return divides_by_zero_;
    }

    grown grow(int depth) {
        int kind = depth == 0 ? 0 : pick(8);
        if (kind == 0) return leaf();
        if (kind == 1) return unary(depth);
        if (kind == 2) return conditional(depth);
        return binary(depth);
    }

  private:
    int pick(int n) {
        return static_cast<int>(random_() % static_cast<unsigned>(n));
    }

    std::string blank() {
        return pick(3) == 0 ? " " : "";
    }

    // In parentheses where its precedence asks for it, and at times anyway.
    std::string inside(const grown &part, int least) {
        if (part.precedence < least || pick(6) == 0)
            return "(" + blank() + part.text + blank() + ")";
        return part.text;
    }

    grown leaf() {
        static const uint32_t numbers[] = {
            0, 1, 2, 3, 7, 31, 32, 100, -1u, 0x7fffffff, 0x80000000};
        uint32_t number = numbers[pick(11)];
        char text[20];
        static const char *const formats[] = {"%u", "0x%x", "0X%X", "0%o"};
        snprintf(text, sizeof text, formats[pick(4)], number);
        return {text, number, 100};
    }

    grown unary(int depth) {
        grown part = grow(depth - 1);
        char which = "-+~!"[pick(4)];
        std::string text = which + blank() + inside(part, 90);
        uint32_t value = part.value;
        if (which == '-') value = 0 - value;
        if (which == '~') value = ~value;
        if (which == '!') value = value == 0;
        return {text, value, 90};
    }

    grown conditional(int depth) {
        grown test = grow(depth - 1), yes = grow(depth - 1);
        grown no = grow(depth - 1);
        std::string text = inside(test, 20) + blank() + "?" + blank() +
                           inside(yes, 10) + blank() + ":" + blank() +
                           inside(no, 10);
        return {text, test.value != 0 ? yes.value : no.value, 10};
    }

    grown binary(int depth) {
        static const struct {
            const char *text;
            int precedence;
        } operators[] = {{"*", 80},  {"/", 80},  {"%", 80},  {"+", 70},
                         {"-", 70},  {"<<", 65}, {">>", 65}, {"<", 60},
                         {">", 60},  {"<=", 60}, {">=", 60}, {"==", 55},
                         {"!=", 55}, {"&", 50},  {"^", 45},  {"|", 40},
                         {"&&", 35}, {"||", 30}};
        int which = pick(18);
        grown left = grow(depth - 1), right = grow(depth - 1);
        int precedence = operators[which].precedence;
        std::string text = inside(left, precedence) + blank() +
                           operators[which].text + blank() +
                           inside(right, precedence + 1);
        return {text, computed(which, left.value, right.value), precedence};
    }

    uint32_t computed(int which, uint32_t a, uint32_t b) {
        int64_t x = static_cast<int32_t>(a), y = static_cast<int32_t>(b);
        if ((which == 1 || which == 2) && y == 0) {
            divides_by_zero_ = true;
            return 0;
        }
        switch (which) {
            case 0:
                return a * b;
            case 1:
                return static_cast<uint32_t>(x / y);
            case 2:
                return static_cast<uint32_t>(x % y);
            case 3:
                return a + b;
            case 4:
                return a - b;
            case 5:
                return a << (b % 32);
            case 6:
                return static_cast<uint32_t>(x >> (b % 32));
            case 7:
                return x < y;
            case 8:
                return x > y;
            case 9:
                return x <= y;
            case 10:
                return x >= y;
            case 11:
                return x == y;
            case 12:
                return x != y;
            case 13:
                return a & b;
            case 14:
                return a ^ b;
            case 15:
                return a | b;
            case 16:
                return x != 0 && y != 0;
            default:
                return x != 0 || y != 0;
        }
    }

    std::mt19937 random_;
    bool divides_by_zero_ = false;
};

TEST(evalarith_second_opinion, random_expressions_have_the_value_of_c) {
    int values = 0, divisions = 0;
    for (unsigned seed = 0; seed < 30000; ++seed) {
        grower trees(seed);
        grown tree = trees.grow(4);
        std::string got = outcome_of(tree.text);
        if (got == overflow_of_operators) continue;
        if (trees.divides_by_zero()) {
            EXPECT_EQ(got, "division by zero") << tree.text;
            ++divisions;
        } else {
            EXPECT_EQ(got, std::to_string(static_cast<int32_t>(tree.value)))
                << tree.text;
            ++values;
        }
    }
    EXPECT_GT(values, 20000);
    EXPECT_GT(divisions, 1000);
}

// The rules once more, slowly: the token table as it is written, values as
// entries of the operator stack, nothing left out.
class slow_rules {
  public:
    slow_rules(const std::string &text, const int *variables)
        : text_(text), variables_(variables) {
    }

    std::string outcome() {
        operators_.push_back("end");
        while (message_.empty()) {
            std::string token = next_token();
            if (message_.empty()) arrive(token);
        }
        return message_;
    }

  private:
    struct numbers {
        int input, stack, operands;
    };

    static numbers of(const std::string &token) {
        static const struct {
            const char *token;
            numbers each;
        } table[] = {
            {"&", {14, 15, 1}},   {"&&", {8, 9, 1}},    {")", {1, 1, 255}},
            {":", {3, 5, 2}},     {"^", {12, 13, 1}},   {"/", {24, 25, 1}},
            {"end", {0, 0, 255}}, {"==", {16, 17, 1}},  {">=", {18, 19, 1}},
            {">", {18, 19, 1}},   {"<=", {18, 19, 1}},  {"<<", {20, 21, 1}},
            {"<", {18, 19, 1}},   {"-", {22, 23, 1}},   {"%", {24, 25, 1}},
            {"*", {24, 25, 1}},   {"u-", {27, 26, 0}},  {"!=", {16, 17, 1}},
            {"!", {27, 26, 0}},   {"v", {30, 30, 255}}, {"(", {31, 1, 255}},
            {"|", {10, 11, 1}},   {"||", {6, 7, 1}},    {"+", {22, 23, 1}},
            {"?", {4, 3, 2}},     {">>", {20, 21, 1}},  {"~", {27, 26, 0}},
            {"u+", {27, 26, 0}},  {"?:", {3, 5, 2}}};
        for (const auto &row : table) {
            if (row.token == token) return row.each;
        }
        ADD_FAILURE() << token;
        return {};
    }

    std::string fail(const std::string &message) {
        message_ = message;
        return "";
    }

    char at(size_t position) const {
        return position < text_.size() ? text_[position] : '\0';
    }

    std::string next_token() {
        while (strchr(" \t\n", at(position_)) && at(position_))
            ++position_;
        if (position_ >= text_.size()) return "end";
        bool binary = last_ == "v" || last_ == ")";
        std::string two = text_.substr(position_, 2);
        char c = text_[position_];
        if (isdigit(static_cast<unsigned char>(c))) return number();
        if (c >= 'a' && c <= 'z') {
            if (variables_ == nullptr) return fail("syntax error");
            ++position_;
            return push_value(static_cast<uint32_t>(variables_[c - 'a']));
        }
        for (const char *longer :
             {"&&", "||", "==", "!=", "<=", ">=", "<<", ">>"}) {
            if (two == longer) {
                position_ += 2;
                return last_ = two;
            }
        }
        ++position_;
        if (!strchr("&|^<>+-*/%!~?:()", c)) return fail("syntax error");
        last_ = std::string(1, c);
        if ((c == '+' || c == '-') && !binary) last_ = "u" + last_;
        return last_;
    }

    std::string number() {
        uint32_t value = 0, radix = 10;
        std::string digits = "0123456789";
        if (at(position_) == '0') {
            ++position_;
            radix = 8;
            if (at(position_) == 'x' || at(position_) == 'X') {
                ++position_;
                radix = 16;
                digits = "0123456789abcdef";
            }
        }
        for (;; ++position_) {
            char c = static_cast<char>(
                tolower(static_cast<unsigned char>(at(position_))));
            size_t digit = c == '\0' ? std::string::npos : digits.find(c);
            if (digit == std::string::npos) break;
            value = value * radix + static_cast<uint32_t>(digit);
        }
        return push_value(value);
    }

    std::string push_value(uint32_t value) {
        if (values_.size() == 21) return fail("value stack overflow");
        values_.push_back(value);
        return last_ = "v";
    }

    bool above(const std::string &token) const {
        const std::string &top = operators_.back();
        if (token == "?" && (top == ":" || top == "?:")) return true;
        return of(token).input > of(top).stack;
    }

    void arrive(const std::string &token) {
        while (!above(token)) {
            if (of(operators_.back()).stack == of(token).input) {
                meet(token);
                return;
            }
            std::string top = operators_.back();
            apply(top);
            if (!message_.empty()) return;
            operators_.pop_back();
        }
        if (operators_.size() == 20)
            fail("operator stack overflow");
        else
            operators_.push_back(token);
    }

    void meet(const std::string &token) {
        std::string pair = operators_.back() + " " + token;
        if (pair == "( )") {
            operators_.pop_back();
        } else if (pair == "? :") {
            operators_.back() = "?:";
        } else if (pair == "v v") {
            fail("syntax error");
        } else if (pair == "end end") {
            fail(values_.size() != 1
                     ? "syntax error"
                     : std::to_string(static_cast<int32_t>(values_.back())));
        } else {
            fail("logic error - bitch to ko");
        }
    }

    void apply(const std::string &token) {
        if (token == "v") return;
        if (token == "(" || token == ")" || token == "?" || token == ":") {
            fail("syntax error");
            return;
        }
        size_t n = static_cast<size_t>(of(token).operands);
        if (values_.size() < n + 1) {
            fail("syntax error");
            return;
        }
        std::vector<uint32_t> operands(
            values_.end() - 1 - static_cast<ptrdiff_t>(n), values_.end());
        values_.resize(values_.size() - n);
        values_.back() = computed(token, operands);
    }

    uint32_t computed(const std::string &token,
                      const std::vector<uint32_t> &v) {
        int64_t x = static_cast<int32_t>(v[0]);
        if (token == "u-") return 0 - v[0];
        if (token == "u+") return v[0];
        if (token == "~") return ~v[0];
        if (token == "!") return v[0] == 0;
        if (token == "?:") return v[0] != 0 ? v[1] : v[2];
        int64_t y = static_cast<int32_t>(v[1]);
        if ((token == "/" || token == "%") && y == 0) {
            fail("division by zero");
            return 0;
        }
        if (token == "/") return static_cast<uint32_t>(x / y);
        if (token == "%") return static_cast<uint32_t>(x % y);
        if (token == "*") return v[0] * v[1];
        if (token == "+") return v[0] + v[1];
        if (token == "-") return v[0] - v[1];
        if (token == "<<") return v[0] << (v[1] % 32);
        if (token == ">>") return static_cast<uint32_t>(x >> (v[1] % 32));
        if (token == "&") return v[0] & v[1];
        if (token == "|") return v[0] | v[1];
        if (token == "^") return v[0] ^ v[1];
        if (token == "&&") return x != 0 && y != 0;
        if (token == "||") return x != 0 || y != 0;
        if (token == "==") return x == y;
        if (token == "!=") return x != y;
        if (token == "<") return x < y;
        if (token == ">") return x > y;
        if (token == "<=") return !(x > y);
        return !(x < y);
    }

    std::string text_;
    const int *variables_;
    size_t position_ = 0;
    std::string last_;
    std::string message_;
    std::vector<uint32_t> values_;
    std::vector<std::string> operators_;
};

// Any heap of tokens: nearly all are errors, and the first one counts.
TEST(evalarith_second_opinion, random_tokens_end_as_the_slow_rules_say) {
    static const char *const tokens[] = {
        "&",  "&&", ")", ")", ":", "^",  "/",  "==", ">=", ">",  "<=", "<<",
        "<",  "-",  "%", "*", "!", "!=", "(",  "(",  "|",  "||", "+",  "?",
        ">>", "~",  "=", "1", "2", "0",  "09", "0x", "a",  "z",  "7",  "3",
        " ",  "A",  "5", "4", "1", "6",  "b",  "()", "(1)"};
    std::mt19937 random(7);
    int variables[26];
    for (int i = 0; i < 26; ++i)
        variables[i] = i - 3;
    for (int i = 0; i < 40000; ++i) {
        std::string text;
        size_t length = 1 + random() % 24;
        for (size_t k = 0; k < length; ++k) {
            text += tokens[random() % std::size(tokens)];
            if (random() % 4 == 0) text += " ";
        }
        const int *given = random() % 8 == 0 ? nullptr : variables;
        EXPECT_EQ(outcome_of(text, given), slow_rules(text, given).outcome())
            << text;
    }
}

// The same where long runs fill the stacks.
TEST(evalarith_second_opinion, full_stacks_end_as_the_slow_rules_say) {
    static const char *const tokens[] = {"(1)", "(",  "1", "-", "1+",
                                         "(1+", "1(", ")", "?", "+"};
    std::mt19937 random(11);
    for (int i = 0; i < 20000; ++i) {
        std::string text = random() % 2 ? "1" : "";
        const char *favourite = tokens[random() % std::size(tokens)];
        for (int k = 0; k < 40; ++k) {
            text +=
                random() % 8 ? favourite : tokens[random() % std::size(tokens)];
        }
        EXPECT_EQ(outcome_of(text), slow_rules(text, nullptr).outcome())
            << text;
    }
}

}  // namespace
