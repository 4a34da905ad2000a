// simplify_fuzz.cc: any path becomes a plain one, in its own place.
#include "fuzz.h"

#include <stdlib.h>
#include <tovan/simplify.h>

namespace {

// No empty component, no ".", and ".." only at the start of a relative path.
bool is_plain(const std::string &path) {
    if (path.empty() || path == "." || path == "/") return true;
    bool parents_only = path[0] != '/';
    size_t from = path[0] == '/' ? 1 : 0;
    while (from <= path.size()) {
        size_t end = path.find('/', from);
        if (end == std::string::npos) end = path.size();
        std::string component = path.substr(from, end - from);
        if (component.empty() || component == ".") return false;
        if (component == ".." && !parents_only) return false;
        parents_only = parents_only && component == "..";
        from = end + 1;
    }
    return true;
}

void simplify_twice(const std::string &text) {
    std::string path = text;
    simplify(path.data(), 0);
    path = path.c_str();
    if (!is_plain(path) || path.empty() != text.empty()) abort();
    if (!text.empty() && (path[0] == '/') != (text[0] == '/')) abort();
    std::string again = path;
    simplify(again.data(), 0);
    if (again.c_str() != path) abort();
    std::string linked = text;
    simplify(linked.data(), 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    setenv("DBLESLASHROOT", "0", 1);
    std::string bytes(reinterpret_cast<const char *>(data), size);
    simplify_twice(bytes.c_str());
    return 0;
}
