// evalarit_fuzz.cc: any text is a value or one of five messages.
#include "fuzz.h"

#include <stdlib.h>
#include <string.h>
#include <tovan/evalarit.h>

namespace {

bool is_known(const char *message) {
    for (const char *known :
         {"syntax error", "operator stack overflow", "value stack overflow",
          "division by zero", "logic error - bitch to ko"}) {
        if (strcmp(message, known) == 0) return true;
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string text(reinterpret_cast<const char *>(data), size);
    const int variables[26] = {0, 1, -1, 2147483647, -2147483647 - 1, 31};
    for (const int *given : {variables, static_cast<const int *>(nullptr)}) {
        const int untouched = 123456789;
        int result = untouched;
        const char *message = evalarith(text.c_str(), &result, given);
        if (message == nullptr) continue;
        if (!is_known(message) || result != untouched) abort();
    }
    return 0;
}
