// sysnames_fuzz.cc: tables of system names. The source is taken in whole, so
// that its state, which otherwise holds for the process, can be set back
// before each table.
#include "../lib/sysnames.cc"

#include "fuzz.h"

#include <sys/mman.h>
#include <unistd.h>

namespace {

const char *table_file() {
    static int descriptor = memfd_create("table", 0);
    static std::string name = "/proc/self/fd/" + std::to_string(descriptor);
    return name.c_str();
}

void write_table(const uint8_t *data, size_t size) {
    if (truncate(table_file(), 0) != 0) abort();
    FILE *file = fopen(table_file(), "w");
    fwrite(data, 1, size, file);
    fclose(file);
}

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
    write_table(data, size);
    setsysnamestab(table_file());
    for (int flags : {1, 4, 0}) {
        forget_match();
        char **found = nullptr;
        bool ended = !fuzz::survives([&] { found = sysnames(flags, nullptr); });
        if (!ended && flags != 1) check_record(found);
    }
    return 0;
}
