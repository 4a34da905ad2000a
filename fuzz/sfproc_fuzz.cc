// sfproc_fuzz.cc: any text can be expanded.
#include "dictionary.h"
#include "fuzz.h"

#include <string.h>

namespace {

// Values of "A", "B" and "C": the input up to its third newline.
const char *define_values(const char *text) {
    for (const char *name : {"A", "B", "C"}) {
        const char *end = strchrnul(text, '\n');
        std::string value(text, end);
        sf_dictext(name, value.c_str(), "fuzz", 1, 0);
        text = *end != '\0' ? end + 1 : end;
    }
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0) return 0;
    sf_uflag = data[0] & 1;
    sf_splitchar = static_cast<char>(data[0] & 0x7e);
    std::string input(reinterpret_cast<const char *>(data + 1), size - 1);
    fuzz::forget({"A", "B", "C"});
    const char *text = define_values(input.c_str());
    dy output{};
    int had_error = -1;
    const char *result = sf_proc(text, &output, 1, &had_error, "fuzz", 2);
    if (result != output.buffer || output.length >= output.capacity ||
        strlen(result) != static_cast<size_t>(output.length))
        abort();
    if (had_error != 0 && had_error != 1) abort();
    bool has_reference = strchr(text, '@') != nullptr;
    if (!has_reference && (had_error != 0 || strcmp(result, text) != 0))
        abort();
    free(output.buffer);
    return 0;
}
