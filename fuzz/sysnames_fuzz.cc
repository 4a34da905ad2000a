// sysnames_fuzz.cc: tables of system names. The source is taken in whole, so
// that its state, which otherwise holds for the process, can be set back
// before each table.
#include "../lib/sysnames.cc"

#include "fuzz.h"
#include "memory_file.h"
#include "patterns.h"

namespace {

void forget_match() {
    names.matched = false;
}

// Every value is a text, and what the host gives left nothing open.
void check_record(char **found) {
    for (int i = 0; i < 16; ++i) {
        if (found[i] == nullptr || found[i][0] == '\0') abort();
    }
    for (int i : {os, release, cpu, config}) {
        if (strcmp(found[i], "^") == 0) abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::report_less();
    setsysnamestab(fuzz::memory_file(data, size));
    for (int flags : {1, 4}) {
        forget_match();
        char **found = nullptr;
        bool ended = !fuzz::survives([&] { found = sysnames(flags, nullptr); });
        if (!ended && flags != 1) check_record(found);
    }
    return 0;
}
