// patmatch_fuzz.cc: any list of words, options among them.
#include "fuzz.h"
#include "patterns.h"

#include <stdlib.h>
#include <string.h>
#include <tovan/fmatch.h>
#include <vector>

namespace {

// Expressions with back-references may take their time: their words stay
// short.
constexpr size_t longest_word_of_expressions = 16;

bool has_expressions(const std::vector<const char *> &words) {
    for (const char *word : words) {
        if (strcmp(word, "-rxp") == 0) return true;
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string bytes(reinterpret_cast<const char *>(data), size);
    std::vector<const char *> words;
    size_t longest = 0;
    for (size_t from = 0; from < bytes.size();) {
        words.push_back(bytes.c_str() + from);
        size_t length = strlen(words.back());
        if (length > longest) longest = length;
        from += length + 1;
    }
    if (longest > longest_word_of_expressions && has_expressions(words))
        return -1;
    words.push_back(nullptr);
    fuzz::report_less();
    int result = patmatch(words.data());
    if (result != 0 && result != 1) abort();
    return 0;
}
