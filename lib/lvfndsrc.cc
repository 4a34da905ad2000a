// lvfndsrc.cc: source files are found, and remembered.
#include "lvget.h"

#include "chkalloc.h"
#include "dystr.h"
#include "ident.h"
#include "private_hash.h"
#include "strutil.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

using tovan::hash_slot;

namespace {

struct source_record {
    char *path;
    const char *key;  // the tail of the path that is looked up
};

// Paths by key: slot n of the table is record n - 1. Filled by lvfndsrc() and
// lvsvsrc(); holds for the process; never released but for paths that are
// replaced.
// Deliberate: another heap does not empty it, and a recorded path is not
// tested again (test what_was_found_is_not_tested_again).
struct source_map {
    source_record *records;
    size_t count;
    size_t capacity;
    tovan::hash_table keys;
};
constinit source_map map{};

constexpr size_t first_capacity = 20;  // sources of a small directory

// The path last found. Filled by lvfndsrc(); holds until its next call; never
// released.
constinit dy candidate{};

tovan::hashed_text hashed(const char *key) {
    size_t length = strlen(key);
    return {key, length, tovan::text_tag(key, length)};
}

bool has_key(const hash_slot *slot, const char *key) {
    return strcmp(map.records[slot->at - 1].key, key) == 0;
}

// The number of a key's record, from 1; 0: there is none.
uint32_t find_record(const char *key) {
    tovan::hashed_text text = hashed(key);
    return find_at(
        &map.keys, text.tag,
        [key](const hash_slot *slot) { return has_key(slot, key); },
        [&text] { return text; });
}

// Enters a record with a key of its own.
void enter_key(size_t record) {
    tovan::hashed_text text = hashed(map.records[record].key);
    hash_slot *slot = slot_for(
        &map.keys, text.tag, [](const hash_slot *) { return false; },
        [&text] { return text; });
    *slot = {text.tag, static_cast<uint32_t>(record + 1)};
}

void grow_map() {
    map.capacity = map.capacity > 0 ? 2 * map.capacity : first_capacity;
    map.records = static_cast<source_record *>(
        chkrealloc(map.records, map.capacity * sizeof(source_record)));
    free_hash_table(&map.keys);
    map.keys = tovan::new_hash_table(map.capacity);
    for (size_t i = 0; i < map.count; ++i)
        enter_key(i);
}

// Keeps a copy of the path under its tail.
void record_source(const char *path, const char *tail) {
    if (map.count == map.capacity) grow_map();
    char *copy = savestr(path);
    source_record record = {copy, copy + (tail - path)};
    uint32_t known = find_record(tail);
    if (known != 0) {
        free(map.records[known - 1].path);
        map.records[known - 1] = record;
        return;
    }
    map.records[map.count] = record;
    enter_key(map.count++);
}

bool is_readable(const char *path) {
    return access(path, R_OK) == 0;
}

const char *recorded_source(const char *name) {
    if (map.count == 0) return nullptr;
    uint32_t known = find_record(name);
    return known != 0 ? map.records[known - 1].path : nullptr;
}

// Tries the source directories; the first one, the current directory, was
// tried before.
const char *search_source(const char *name) {
    for (char **directory = lvsrcdirs(1); *directory != nullptr; ++directory) {
        dyreuse(&candidate, 64);
        dystr(&candidate, *directory);
        dyaddslash(&candidate);
        int directory_length = candidate.length;
        dystr(&candidate, name);
        if (!is_readable(candidate.buffer)) continue;
        record_source(candidate.buffer, candidate.buffer + directory_length);
        return candidate.buffer;
    }
    return nullptr;
}

}  // namespace

const char *lvfndsrc(const char *name, const char *fallback) {
    if (*name == '/') return is_readable(name) ? name : fallback;
    if (is_readable(name)) return name;
    const char *path = recorded_source(name);
    if (path == nullptr) path = search_source(name);
    return path != nullptr ? path : fallback;
}

void lvsvsrc(const char *path) {
    record_source(path, leafnm(path));
}

TOVAN_IDENT(lvfndsrc, "8.4", "26/11/21")
