// patmatch_fuzz.cc: any list of words, options among them.
#include "fuzz.h"

#include <stdlib.h>
#include <tovan/fmatch.h>
#include <vector>

namespace {

// Patterns with errors report them once for each way that leads there, and
// expressions with back-references may take their time.
constexpr size_t longest_word = 16;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string bytes(reinterpret_cast<const char *>(data), size);
    std::vector<const char *> words;
    for (size_t from = 0; from < bytes.size();) {
        words.push_back(bytes.c_str() + from);
        size_t length = std::string(words.back()).size();
        if (length > longest_word) return -1;
        from += length + 1;
    }
    words.push_back(nullptr);
    int result = patmatch(words.data());
    if (result != 0 && result != 1) abort();
    return 0;
}
