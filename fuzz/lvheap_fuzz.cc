// lvheap_fuzz.cc: any bytes as a heap; what loads must answer look-ups as a
// walk of the chains would.
//
// The first byte of the input says what the others are: 'f' the file itself,
// anything else a short form of it: the number of heads, a chain and a
// position for each, then the heap.
#include "fuzz.h"

#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <tovan/fmatch.h>
#include <tovan/lvget.h>
#include <tovan/private_lvget.h>
#include <tovan/strutil.h>
#include <unistd.h>
#include <vector>

namespace {

using tovan::heap_entry;

constexpr size_t most_names = 24;  // looked up of one heap
constexpr const char *keys[] = {"", "a", "ab", "x86_64"};

void put32(std::string *bytes, size_t at, uint32_t value) {
    for (size_t i = 0; i < 4; ++i)
        (*bytes)[at + i] = static_cast<char>(value >> (24 - 8 * i));
}

std::string whole_file(const uint8_t *data, size_t size) {
    if (size == 0) return "";
    auto *bytes = reinterpret_cast<const char *>(data);
    if (data[0] == 'f') return std::string(bytes + 1, size - 1);
    size_t heads = size > 1 ? data[1] % 32 : 0;
    size_t heap_at = 2 + 2 * heads;
    std::string file(1052, '\0');
    memcpy(file.data(), "LclVars3\n", 10);
    for (size_t i = 0; i < heads && 3 + 2 * i < size; ++i)
        put32(&file, 28 + size_t{4} * data[2 + 2 * i], data[3 + 2 * i]);
    if (heap_at < size) file.append(bytes + heap_at, size - heap_at);
    put32(&file, 20, static_cast<uint32_t>(file.size() - 1052));
    return file;
}

// An unnamed file with these bytes, ready to be read.
int descriptor_of(const std::string &file) {
    static const int descriptor = memfd_create("heap", 0);
    if (ftruncate(descriptor, 0) != 0) abort();
    if (pwrite(descriptor, file.data(), file.size(), 0) < 0) abort();
    lseek(descriptor, 0, SEEK_SET);
    return descriptor;
}

std::vector<std::string> names;
size_t texts_length = 0;

int note(int, int, const char *name, const char *value) {
    texts_length += strlen(value);  // looked at to its end
    if (names.size() < most_names) names.push_back(name);
    return 0;
}

const char *found_by_walk(const char *name) {
    int chain = strhash(name, nullptr, lvhshtab);
    const char *found = nullptr;
    tovan::for_each_entry(tovan::variables(),
                          [&](int bucket, const heap_entry *entry) {
                              if (bucket != chain || found != nullptr) return;
                              if (strcmp(tovan::entry_name(entry), name) == 0)
                                  found = tovan::entry_value(entry);
                          });
    return found;
}

const char *found_by_scan(const char *name, const std::string &key) {
    size_t n = strlen(name);
    const char *held = nullptr;
    size_t longest = 0;
    bool settled = false;
    std::string wanted = key + "]";
    tovan::for_each_entry(
        tovan::variables(), [&](int, const heap_entry *entry) {
            const char *own = tovan::entry_name(entry);
            if (settled || strncmp(own, name, n) != 0) return;
            const char *rest = own + n;
            if (*rest == '\0' && held == nullptr)
                held = tovan::entry_value(entry);
            if (*rest != '[') return;
            settled = wanted == rest + 1;
            bool better =
                strlen(rest) > longest && fmatch(wanted.c_str(), rest + 1) != 0;
            if (better) longest = strlen(rest);
            if (settled || better) held = tovan::entry_value(entry);
        });
    return held;
}

void look_up(const std::string &name) {
    if (lvvar(name.c_str()) != found_by_walk(name.c_str())) abort();
    std::string base = name.substr(0, name.find('['));
    for (const char *key : keys) {
        const char *matched = lvvarmatch(1, base.c_str(), key);
        if (matched != found_by_scan(base.c_str(), key)) abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    int descriptor = descriptor_of(whole_file(data, size));
    bool loads = fuzz::survives([descriptor] {
        tovan::read_heap(tovan::variables(), descriptor, "fuzz");
        tovan::index_heap(tovan::variables(), "fuzz");
    });
    if (!loads) return 0;
    names.clear();
    lvwalk(0, note);
    for (const std::string &name : names)
        look_up(name);
    look_up("none");
    return 0;
}
