// names_text.h: the text of job f: words, and references to 500 names.
#ifndef TOVAN_BENCH_NAMES_TEXT_H
#define TOVAN_BENCH_NAMES_TEXT_H

#include <iterator>
#include <random>
#include <string>

namespace bench {

constexpr int name_count = 500;

inline std::string name_of(int i) {
    return "NAME_" + std::to_string(i);
}

inline std::string value_of(int i) {
    return "/usr/local/value/" + std::to_string(i * 7919);
}

// Lines of words; every second one has a reference, half of these have two.
//   before, after  what makes a reference of a name
inline std::string text_of(size_t size, const std::string &before,
                           const std::string &after) {
    static const char *const words[] = {"the",    "library", "copies",  "lines",
                                        "from",   "files",   "through", "a",
                                        "writer", "of",      "texts",   "and"};
    std::mt19937 random(50);
    std::string text;
    text.reserve(size + 200);
    while (text.size() < size) {
        size_t references = random() % 4;
        for (size_t n = 6 + random() % 8; n > 0; --n) {
            text += words[random() % std::size(words)];
            text += ' ';
        }
        for (; references > 1; --references)
            text += before + name_of(static_cast<int>(random() % name_count)) +
                    after + ' ';
        text.back() = '\n';
    }
    return text;
}

// A line for each name, such as a peer's program needs them.
inline std::string names_script(const char *before, const char *between,
                                const char *after) {
    std::string all;
    for (int i = 0; i < name_count; ++i)
        all += before + name_of(i) + between + value_of(i) + after + "\n";
    return all;
}

}  // namespace bench

#endif
