// lvexpand_fuzz.cc: any text over a few variables. What the library expands,
// the rules one by one must expand to the same.
#include "fuzz.h"
#include "patterns.h"
#include "support/heap_image.h"
#include "support/plain_expansion.h"

#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <tovan/dystr.h>
#include <tovan/lvexpand.h>
#include <tovan/lvget.h>
#include <unistd.h>

namespace {

void expect(bool holds) {
    if (!holds) abort();
}

// The name of a heap file in memory.
std::string heap_file(const std::vector<support::variable> &variables) {
    std::string bytes = support::heap_of(variables);
    int descriptor = memfd_create("heap", 0);
    expect(write(descriptor, bytes.data(), bytes.size()) ==
           static_cast<ssize_t>(bytes.size()));
    return "/proc/self/fd/" + std::to_string(descriptor);
}

void set_up() {
    const std::string variables = heap_file({
        {"A", "a"},
        {"Pad", " a b "},
        {"Empty", ""},
        {"Call", "take1st"},
        {"X[a]", "xa"},
        {"X[]", "x"},
        {"X[x*]", "pattern"},
        {"X", "plain"},
        {"SrcPath", ". src"},
        {"CurDir", "/tree"},
        {"RootPath", "/tree /net"},
        {"TreeType[/net]", "t"},
        {"System[Name]", "linux"},
    });
    const std::string traits = heap_file({{"MAXLEAFLEN", "255"}});
    lvget(0, nullptr, 0, variables.c_str(), nullptr);
    setenv("TRAITS_FILE", traits.c_str(), 1);
    setenv("MORVA", "/nowhere", 1);
    setenv("HOME", "/nowhere", 1);
    setenv("PATH", "/bin", 1);
}

std::string value_of(const std::string &name) {
    const char *value = lvvar(name.c_str());
    return value != nullptr ? value : "";
}

bool run(const std::string &call, std::string *output) {
    std::string text = call;
    dy out;
    dynew(&out, 0);
    dystr(&out, output->c_str());
    bool found = runfunc(text.data(), &out) == 0;
    *output = out.buffer;
    free(out.buffer);
    return found;
}

// Each insert around another may multiply the length: more than a few only
// measure the memory.
bool is_small(const std::string &text) {
    int inserts = 0;
    for (size_t at = 0; (at = text.find("insert", at)) != std::string::npos;
         at++) {
        inserts++;
    }
    return inserts <= 3;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    fuzz::report_less();
    set_up();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static dy output;
    std::string text(reinterpret_cast<const char *>(data), size);
    text = text.c_str();
    if (!is_small(text)) return 0;
    std::string kept = text;
    dyreuse(&output, 16);
    dystr(&output, "before ");
    bool expanded = fuzz::survives([&] { varexpand(text.data(), &output); });
    if (!expanded) return 0;
    expect(text == kept);
    expect(strncmp(output.buffer, "before ", 7) == 0);
    expect(strlen(output.buffer) == static_cast<size_t>(output.length));
    expect(support::plain_expansion(text, {value_of, run}) ==
           output.buffer + 7);
    return 0;
}
