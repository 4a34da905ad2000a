// map_root_fuzz.cc: root maps and the paths that go through them. The input
// is a path, a NUL and the content of a map file. The source with the records
// is taken in whole, so that they can be dropped before each file. The host
// and its system names are fixed.
#include "../lib/add_map.cc"

#include "fuzz.h"
#include "memory_file.h"
#include "patterns.h"

#include <tovan/dospath.h>
#include <tovan/sysnames.h>

extern "C" int gethostname(char *name, size_t size) noexcept {
    snprintf(name, size, "mill");
    return 0;
}

char **sysnames(int, char **) {
    static char config[] = "Unix-2-pdp11";
    static char *record[16];
    record[6] = config;
    return record;
}

namespace {

void drop_records() {
    maprec *records = tovan::mapping_records();
    for (int i = 0; i < maps.records.count; ++i) {
        free(records[i].from);
        free(records[i].to);
    }
    free(maps.records.data);
    free_hash_table(&maps.index);
    maps = {};
}

// The array ends where its count says, and no two records are equal.
void check_records() {
    const maprec *records = load_rootmaps();
    int count = 0;
    for (; records[count].from != nullptr; ++count) {
        const maprec &one = records[count];
        if (one.type < 1 || one.type > 4) abort();
        if (strlen(one.from) != static_cast<size_t>(one.fromlen)) abort();
        if (one.from[0] == '\0' || one.to[0] == '\0') abort();
    }
    if (count != maps.records.count) abort();
    for (int i = 0; i < count && count < 200; ++i) {
        for (int j = i + 1; j < count; ++j) {
            if (is_equal(&records[i], &records[j])) abort();
        }
    }
}

void convert(const char *path) {
    static dy output;
    dyreuse(&output, 1);
    map_root(path, &output);
    for (int mode = 0; mode <= 2; ++mode) {
        dospath(&output, path, nullptr, 1, mode);
        dospath(&output, path, ".o", 0, mode);
    }
    for (int flags = 0; flags <= 2; ++flags)
        ixpath(&output, path, flags);
    if (strlen(output.buffer) != static_cast<size_t>(output.length)) abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::report_less();
    std::string input(reinterpret_cast<const char *>(data), size);
    load_rootmaps();
    drop_records();
    std::string path = input.c_str();
    size_t start = std::min(path.size() + 1, size);
    load_mappings(fuzz::memory_file(data + start, size - start), 1);
    check_records();
    convert(path.c_str());
    return 0;
}
