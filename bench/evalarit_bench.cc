// evalarit_bench.cc: job l, a million expressions of 20 characters, beside a
// plain precedence parser and two programs that evaluate expressions.
#include <benchmark/benchmark.h>
#include <stdio.h>
#include <stdlib.h>
#include <tovan/evalarit.h>
#include <unistd.h>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int distinct = 1000;
constexpr int rounds = 1000;

int variables[26];

// Expressions of exactly 20 characters that divide by no zero.
class generator {
  public:
    std::string expression() {
        for (;;) {
            std::string text = attempt();
            if (text.size() == 20) return text;
        }
    }

  private:
    size_t pick(size_t n) {
        return random_() % n;
    }

    std::string operand() {
        if (pick(3) == 0)
            return std::string(1, static_cast<char>('a' + pick(26)));
        return std::to_string(1 + pick(1000));
    }

    std::string attempt() {
        static const char *const operators[] = {"+",  "-",  "*", "/", "<", "&&",
                                                "==", ">>", "|", "%", "+", "*"};
        std::string text;
        int open = 0;
        for (;;) {
            bool opens = pick(5) == 0;
            if (opens) text += "(";
            text += operand();
            open += opens;
            while (!opens && open > 0 && pick(2) == 0) {
                text += ")";
                --open;
            }
            if (text.size() >= 16 && open == 0) return text;
            std::string which = operators[pick(std::size(operators))];
            const char *blank = pick(2) == 0 ? " " : "";
            text += blank + which + blank;
            if (which == "/" || which == "%")
                text += std::to_string(1 + pick(100)) + "+";
        }
    }

    std::mt19937 random_{1};
};

const std::vector<std::string> &expressions() {
    static const std::vector<std::string> all = [] {
        for (int i = 0; i < 26; ++i)
            variables[i] = i + 1;
        generator source;
        std::vector<std::string> made;
        for (int i = 0; i < distinct; ++i)
            made.push_back(source.expression());
        return made;
    }();
    return all;
}

// What one would write instead: precedence climbing by recursion.
class plain_parser {
  public:
    int evaluate(const char *text) {
        next_ = text;
        return binary(0);
    }

  private:
    struct oper {
        int precedence;
        int length;
    };

    void skip_blanks() {
        while (*next_ == ' ' || *next_ == '\t' || *next_ == '\n')
            ++next_;
    }

    int primary() {
        skip_blanks();
        char c = *next_;
        if (c == '(') {
            ++next_;
            int value = binary(0);
            skip_blanks();
            ++next_;
            return value;
        }
        if (c == '-' || c == '~' || c == '!') {
            ++next_;
            int value = primary();
            return c == '-' ? -value : c == '~' ? ~value : !value;
        }
        if (c >= 'a' && c <= 'z') return variables[*next_++ - 'a'];
        int value = 0;
        while (*next_ >= '0' && *next_ <= '9')
            value = value * 10 + *next_++ - '0';
        return value;
    }

    oper peek() const {
        char second = next_[1];
        switch (*next_) {
            case '*':
            case '/':
            case '%':
                return {10, 1};
            case '+':
            case '-':
                return {9, 1};
            case '<':
            case '>':
                if (second == *next_) return {8, 2};
                return {7, second == '=' ? 2 : 1};
            case '=':
            case '!':
                return {6, 2};
            case '&':
                return second == '&' ? oper{2, 2} : oper{5, 1};
            case '^':
                return {4, 1};
            case '|':
                return second == '|' ? oper{1, 2} : oper{3, 1};
            default:
                return {-1, 0};
        }
    }

    static int computed(char first, char second, int a, int b) {
        switch (first) {
            case '*':
                return a * b;
            case '/':
                return b != 0 ? a / b : 0;
            case '%':
                return b != 0 ? a % b : 0;
            case '+':
                return a + b;
            case '-':
                return a - b;
            case '<':
                return second == '<' ? a << (b & 31) : second ? a <= b : a < b;
            case '>':
                return second == '>' ? a >> (b & 31) : second ? a >= b : a > b;
            case '=':
                return a == b;
            case '!':
                return a != b;
            case '&':
                return second ? a && b : a & b;
            case '^':
                return a ^ b;
            default:
                return second ? a || b : a | b;
        }
    }

    int binary(int least) {
        int left = primary();
        for (;;) {
            skip_blanks();
            oper which = peek();
            if (which.precedence <= least) return left;
            char first = next_[0];
            char second = which.length > 1 ? next_[1] : '\0';
            next_ += which.length;
            left = computed(first, second, left, binary(which.precedence));
        }
    }

    const char *next_ = nullptr;
};

int ours_of(const std::string &text) {
    int result = 0;
    if (evalarith(text.c_str(), &result, variables) != nullptr) abort();
    return result;
}

void evaluate_ours(benchmark::State &state) {
    for (auto _ : state) {
        for (int round = 0; round < rounds; ++round) {
            for (const std::string &text : expressions())
                benchmark::DoNotOptimize(ours_of(text));
        }
    }
}

void evaluate_plain(benchmark::State &state) {
    for (const std::string &text : expressions()) {
        if (plain_parser().evaluate(text.c_str()) != ours_of(text)) abort();
    }
    for (auto _ : state) {
        for (int round = 0; round < rounds; ++round) {
            for (const std::string &text : expressions())
                benchmark::DoNotOptimize(plain_parser().evaluate(text.c_str()));
        }
    }
}

BENCHMARK(evaluate_ours)->Name("l/1M/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(evaluate_plain)
    ->Name("l/1M/plain-parser")
    ->Unit(benchmark::kMillisecond);

// A whole program fed the same million expressions, numbers in place of the
// letters.
std::string script_for(const std::string &before, const std::string &after) {
    std::string script;
    for (int round = 0; round < rounds; ++round) {
        for (const std::string &text : expressions()) {
            script += before;
            for (char c : text)
                script += c >= 'a' && c <= 'z' ? std::to_string(c - 'a' + 1)
                                               : std::string(1, c);
            script += after;
        }
    }
    return script;
}

void evaluate_by_program(benchmark::State &state, const char *program,
                         const char *before, const char *after) {
    std::string found = std::string("command -v ") + program + " >/dev/null";
    if (system(found.c_str()) != 0) {
        state.SkipWithError("not installed");
        return;
    }
    char path[] = "/tmp/evalarit-bench-XXXXXX";
    int descriptor = mkstemp(path);
    FILE *file = fdopen(descriptor, "w");
    fputs(script_for(before, after).c_str(), file);
    fclose(file);
    std::string command = std::string(program) + " " + path + " >/dev/null";
    for (auto _ : state) {
        if (system(command.c_str()) != 0) abort();
    }
    unlink(path);
}

BENCHMARK_CAPTURE(evaluate_by_program, m4, "m4", "eval(", ")")
    ->Name("l/1M/m4")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1);
BENCHMARK_CAPTURE(evaluate_by_program, bash, "bash", ": $((", "))\n")
    ->Name("l/1M/bash")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1);

// O(characters): the quotient of neighbours is below 2.1.
void long_sum(benchmark::State &state) {
    std::string text = "1";
    while (text.size() < static_cast<size_t>(state.range(0)))
        text += "+2*a";
    for (auto _ : state)
        benchmark::DoNotOptimize(ours_of(text));
}

BENCHMARK(long_sum)
    ->Name("law/arithmetic")
    ->Arg(250000)
    ->Arg(500000)
    ->Arg(1000000)
    ->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
