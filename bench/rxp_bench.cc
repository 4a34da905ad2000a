// rxp_bench.cc: regular expressions beside regexec, PCRE2 (interpreted and
// compiled to machine code) and RE2.
//   search/PATTERN    eight patterns over the lines of a generated text,
//                     positions of all sub-matches asked for
//   compile/PATTERN   compile, one match, release
//   hard/PATTERN      patterns that make a search go back again and again, on
//                     one long subject
//   law/PATTERN/N     the same at N letters
#include <benchmark/benchmark.h>
#include <regex.h>
#include <string.h>
#include <tovan/rxpcomp.h>
#include <random>
#include <string>
#include <vector>

#ifdef TOVAN_PEER_PCRE2
#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>
#endif
#ifdef TOVAN_PEER_RE2
#include <re2/re2.h>
#endif

namespace {

constexpr int pairs = 10;  // the whole match and nine sub-matches

struct subject {
    const char *text;
    size_t length;
};

// ---- the text -----------------------------------------------------------

// Lines of a build's log and sources: seeded, so that every run and every
// peer sees the same ones.
class text {
  public:
    explicit text(size_t size) : numbers(20001) {
        bytes.reserve(size + 512);
        while (bytes.size() < size) {
            size_t start = bytes.size();
            add_line();
            bytes += '\0';
            starts.push_back(start);
        }
        for (size_t i = 0; i < starts.size(); i++) {
            const char *line = bytes.data() + starts[i];
            lines.push_back({line, strlen(line)});
        }
    }

    std::vector<subject> lines;

  private:
    std::mt19937 numbers;
    std::string bytes;
    std::vector<size_t> starts;

    unsigned below(unsigned limit) {
        return static_cast<unsigned>(numbers() % limit);
    }

    void add(const char *piece) {
        bytes += piece;
    }

    void add_word() {
        static const char *const words[] = {
            "the",     "object",  "library",  "source",    "static", "return",
            "build",   "target",  "checking", "whether",   "for",    "int",
            "char",    "value",   "status",   "directory", "file",   "command",
            "include", "install", "struct",   "buffer",    "length", "version"};
        add(words[below(24)]);
    }

    void add_words(unsigned count) {
        for (; count > 0; count--) {
            add_word();
            add(" ");
        }
    }

    void add_path(const char *suffix) {
        for (unsigned n = 1 + below(3); n > 0; n--) {
            add_word();
            add("/");
        }
        add_word();
        add(suffix);
    }

    void add_upper(const char *suffix) {
        for (unsigned n = 3 + below(6); n > 0; n--)
            bytes += static_cast<char>('A' + below(26));
        add(suffix);
    }

    void add_number() {
        bytes += std::to_string(below(100000));
    }

    void add_compilation() {
        add(below(2) != 0 ? "gcc -O2 -c -I" : "clang -g -c -I");
        add_path(" ");
        add_path(".c -o ");
        add_path(".o");
    }

    void add_line() {
        switch (below(20)) {
            case 0:
                add("#include <");
                add_path(".h>");
                break;
            case 1:
                add("#ifndef ");
                add_upper("_H");
                break;
            case 2:
                add_compilation();
                break;
            case 3:
                add("ld -r -o lib");
                add_word();
                add(".so ");
                add_path(".o lib");
                add_word();
                add(".a");
                break;
            case 4:
                add("./configure --prefix=/usr --with-");
                add_word();
                break;
            case 5:
                add_word();
                add("=");
                add_number();
                add("; ");
                add_words(8);
                break;
            case 6:
                add_words(9);
                add_number();
                break;
            case 7:
                add("    if (");
                add_word();
                add(" == ");
                add_upper(") return ");
                add_number();
                add(";");
                break;
            default:
                add_words(8 + below(10));
        }
    }
};

const text &lines_of_a_build() {
    static const text made(size_t{4} << 20);
    return made;
}

// ---- who matches --------------------------------------------------------

class ours {
  public:
    explicit ours(const char *pattern) {
        length = rxpcomp(pattern, 0, 0);
    }

    bool matches_in(const subject &s) const {
        return rxpeval(s.text) == 1;
    }

  private:
    int length;
};

class posix {
  public:
    explicit posix(const char *pattern) {
        regcomp(&compiled, pattern, REG_EXTENDED);
    }

    ~posix() {
        regfree(&compiled);
    }

    bool matches_in(const subject &s) const {
        regmatch_t found[pairs];
        return regexec(&compiled, s.text, pairs, found, 0) == 0;
    }

  private:
    regex_t compiled;
};

#ifdef TOVAN_PEER_PCRE2
class pcre2 {
  public:
    explicit pcre2(const char *pattern) {
        int error = 0;
        PCRE2_SIZE offset = 0;
        compiled =
            pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern),
                          PCRE2_ZERO_TERMINATED, 0, &error, &offset, nullptr);
        data = pcre2_match_data_create(pairs, nullptr);
    }

    ~pcre2() {
        pcre2_match_data_free(data);
        pcre2_code_free(compiled);
    }

    bool matches_in(const subject &s) const {
        return pcre2_match(compiled, reinterpret_cast<PCRE2_SPTR>(s.text),
                           s.length, 0, 0, data, nullptr) > 0;
    }

  protected:
    pcre2_code *compiled;
    pcre2_match_data *data;
};

class pcre2_jit : public pcre2 {
  public:
    explicit pcre2_jit(const char *pattern) : pcre2(pattern) {
        pcre2_jit_compile(compiled, PCRE2_JIT_COMPLETE);
    }

    bool matches_in(const subject &s) const {
        return pcre2_jit_match(compiled, reinterpret_cast<PCRE2_SPTR>(s.text),
                               s.length, 0, 0, data, nullptr) > 0;
    }
};
#endif

#ifdef TOVAN_PEER_RE2
class linear {
  public:
    explicit linear(const char *pattern)
        : compiled(pattern), groups(1 + compiled.NumberOfCapturingGroups()) {
    }

    bool matches_in(const subject &s) const {
        ::re2::StringPiece found[pairs];
        return compiled.Match({s.text, s.length}, 0, s.length,
                              ::RE2::UNANCHORED, found, groups);
    }

  private:
    ::RE2 compiled;
    int groups;
};
#endif

// ---- jobs ---------------------------------------------------------------

struct job {
    const char *name;
    const char *pattern;  // ours
    const char *theirs;
    const char *line;  // that matches
};

constexpr job searches[] = {
    {"p1", "configure", "configure", "./configure"},
    {"p2", "^#[a-z]+", "^#[a-z]+", "#if 0"},
    {"p3", "[A-Z][A-Z0-9]*_H", "[A-Z][A-Z0-9]*_H", "ABC_H"},
    {"p4", "<gcc|clang|ld>", "(gcc|clang|ld)", "gcc -c x.c"},
    {"p5", "\\([a-z]+\\)/\\([a-z]+\\)\\.c", "([a-z]+)/([a-z]+)\\.c", "lib/x.c"},
    {"p6", "lib.*\\.a$", "lib.*\\.a$", "libx.a"},
    {"p7", "<<[a-z]+>=<[0-9]+>>", "(([a-z]+)=([0-9]+))", "a=12"},
    {"p8", "[^ ]+ [^ ]+ [0-9][0-9]*$", "[^ ]+ [^ ]+ [0-9][0-9]*$", "a b 12"},
};

template <typename Matcher>
void search(benchmark::State &state, const char *pattern) {
    const std::vector<subject> &lines = lines_of_a_build().lines;
    Matcher matcher(pattern);
    size_t found = 0;
    size_t bytes = 0;
    for (auto _ : state) {
        found = 0;
        bytes = 0;
        for (const subject &line : lines) {
            found += matcher.matches_in(line);
            bytes += line.length;
        }
        benchmark::DoNotOptimize(found);
    }
    state.counters["lines"] = static_cast<double>(found);
    state.SetBytesProcessed(static_cast<int64_t>(bytes) *
                            static_cast<int64_t>(state.iterations()));
}

template <typename Matcher>
void compile(benchmark::State &state, const char *pattern, const char *text) {
    const subject line = {text, strlen(text)};
    for (auto _ : state) {
        Matcher matcher(pattern);
        benchmark::DoNotOptimize(matcher.matches_in(line));
    }
}

// n letters "a", and what follows them.
struct hard_job {
    const char *name;
    const char *pattern;
    const char *theirs;
    const char *end;
    bool is_quick_for_regexec;
    bool is_quick_for_pcre2;
};

constexpr hard_job hard[] = {
    {"alternatives", "<a|a>*[bd]", "(a|a)*[bd]", "c", true, false},
    {"alternatives_matching", "<a|a>*[bd]c", "(a|a)*[bd]c", "bc", true, false},
    {"stars", "a*a*a*a*a*[bd]", "a*a*a*a*a*[bd]", "c", false, false},
    {"nested", "<<a*>*>*[bd]", "((a*)*)*[bd]", "c", true, false},
    {"dots", ".*.*.*=.*x", ".*.*.*=.*x", "c", false, true},
    {"submatches", "\\(<a|a>*\\)\\([bd]\\)[ce]", "((a|a)*)([bd])[ce]", "bd",
     true, false},
    {"word", "[a-z]+[0-9]", "[a-z]+[0-9]", "c", false, false},
};

template <typename Matcher>
void match_hard(benchmark::State &state, const char *pattern, const char *end,
                size_t n) {
    std::string line = std::string(n, 'a') + end;
    Matcher matcher(pattern);
    for (auto _ : state)
        benchmark::DoNotOptimize(
            matcher.matches_in({line.c_str(), line.size()}));
}

template <typename Job>
void add_job(const std::string &name, Job run) {
    benchmark::RegisterBenchmark(name.c_str(), run);
}

template <typename Matcher>
void add_searches(const std::string &who, bool is_peer) {
    for (const job &j : searches) {
        const char *pattern = is_peer ? j.theirs : j.pattern;
        add_job(
            "search/" + std::string(j.name) + "/" + who,
            [pattern](benchmark::State &s) { search<Matcher>(s, pattern); });
        add_job("compile/" + std::string(j.name) + "/" + who,
                [&j, pattern](benchmark::State &s) {
                    compile<Matcher>(s, pattern, j.line);
                });
    }
}

template <typename Matcher>
void add_hard(const hard_job &j, const std::string &who, bool is_peer,
              size_t n) {
    const char *pattern = is_peer ? j.theirs : j.pattern;
    const char *end = j.end;
    add_job(
        "hard/" + std::string(j.name) + "/" + std::to_string(n) + "/" + who,
        [=](benchmark::State &s) { match_hard<Matcher>(s, pattern, end, n); });
}

void add_all_hard() {
    for (const hard_job &j : hard) {
        add_hard<ours>(j, "ours", false, 100000);
        add_hard<ours>(j, "ours", false, 2000);
        if (j.is_quick_for_regexec) add_hard<posix>(j, "regexec", true, 2000);
#ifdef TOVAN_PEER_RE2
        add_hard<linear>(j, "RE2", true, 100000);
        add_hard<linear>(j, "RE2", true, 2000);
#endif
#ifdef TOVAN_PEER_PCRE2
        if (j.is_quick_for_pcre2) {
            add_hard<pcre2>(j, "PCRE2", true, 2000);
            add_hard<pcre2_jit>(j, "PCRE2JIT", true, 2000);
        }
#endif
        for (size_t n = 250000; n <= 1000000; n *= 2) {
            const char *pattern = j.pattern;
            const char *end = j.end;
            add_job("law/" + std::string(j.name) + "/" + std::to_string(n),
                    [=](benchmark::State &s) {
                        match_hard<ours>(s, pattern, end, n);
                    });
        }
    }
}

}  // namespace

int main(int count, char **words) {
    add_searches<ours>("ours", false);
    add_searches<posix>("regexec", true);
#ifdef TOVAN_PEER_PCRE2
    add_searches<pcre2>("PCRE2", true);
    add_searches<pcre2_jit>("PCRE2JIT", true);
#endif
#ifdef TOVAN_PEER_RE2
    add_searches<linear>("RE2", true);
#endif
    add_all_hard();
    benchmark::Initialize(&count, words);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
