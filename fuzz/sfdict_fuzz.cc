// sfdict_fuzz.cc: any bytes are a dictionary, and what is listed of it can be
// read back.
#include "dictionary.h"
#include "fuzz.h"
#include "memory_file.h"

#include <stdlib.h>
#include <algorithm>

namespace {

// Whether a list carries the value as it is.
bool can_be_listed(const std::string &value) {
    return value.find_first_of("\n\t\r") == std::string::npos &&
           value.find("  ") == std::string::npos &&
           (value.empty() || (value.front() != ' ' && value.back() != ' '));
}

bool is_operation(const std::string &name) {
    static const char *const words[] = {"append",   "cset",  "cnilset",   "set",
                                        "setifnil", "unset", "unsetifnil"};
    return std::find(std::begin(words), std::end(words), name) !=
           std::end(words);
}

bool can_be_read_back(const std::vector<std::string> &names) {
    for (const std::string &name : names) {
        const char *value = sf_valvar(name.c_str(), -1, nullptr, nullptr);
        if (is_operation(name) || !can_be_listed(value)) return false;
    }
    return true;
}

void read(const std::string &content) {
    const char *path = fuzz::memory_file(content.data(), content.size());
    if (!fuzz::survives([&] { sfdict(path); })) abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    read(std::string(reinterpret_cast<const char *>(data), size));
    std::string first = fuzz::listing();
    std::vector<std::string> names = fuzz::names_in(first);
    bool must_be_same = can_be_read_back(names);
    fuzz::forget(names);
    if (!fuzz::listing().empty()) abort();
    read(first);
    std::string second = fuzz::listing();
    if (must_be_same && first != second) abort();
    fuzz::forget(fuzz::names_in(second));
    return 0;
}
