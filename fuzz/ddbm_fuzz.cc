// ddbm_fuzz.cc: any bytes as the two files of a database, then any operations
// on them.
//
// The first byte of the input says whether the database is made anew (odd), so
// that everything must be found that was stored, and how large pages are; the
// second and the next two are the lengths of the directory file and of the page
// file, in units of 4. The two files follow, then the program: operations of
// two bytes and more.
#include "fuzz.h"

#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <tovan/ddbm.h>
#include <unistd.h>
#include <map>
#include <optional>

namespace {

constexpr int io_error = 2;
constexpr unsigned large_pages = 252;  // and above, of the first byte
constexpr int most_operations = 64;
constexpr int most_keys = 200;  // of one iteration

// The input, byte by byte; zeros behind its end.
struct reader {
    const uint8_t *next;
    size_t left;

    unsigned byte() {
        if (left == 0) return 0;
        --left;
        return *next++;
    }
    std::string bytes(size_t count) {
        if (count > left) count = left;
        std::string taken(reinterpret_cast<const char *>(next), count);
        next += count;
        left -= count;
        return taken;
    }
};

struct memory_file {
    int descriptor;
    std::string path;

    explicit memory_file(const char *name)
        : descriptor(memfd_create(name, 0)),
          path("/proc/self/fd/" + std::to_string(descriptor)) {
    }
    void hold(const std::string &bytes) const {
        if (ftruncate(descriptor, 0) != 0) abort();
        if (pwrite(descriptor, bytes.data(), bytes.size(), 0) < 0) abort();
    }
};

using contents = std::map<std::string, std::string>;

dbm_datum item_of(const std::string &bytes) {
    return {const_cast<char *>(bytes.data()), static_cast<int>(bytes.size())};
}

// Reads every byte of an item, which must lie in the page or be a copy.
std::optional<std::string> bytes_of(dbm_datum item) {
    if (item.data == nullptr) {
        if (item.length != 0) abort();
        return std::nullopt;
    }
    if (item.length < 0) abort();
    return std::string(item.data, static_cast<size_t>(item.length));
}

// A database that is being worked on. Of one that was made here it is known
// what it holds.
struct session {
    dbm_handle *db;
    bool is_ours;
    contents held;

    void store(const std::string &key, const std::string &value, int mode) {
        int result = dbm_store(db, item_of(key), item_of(value), mode);
        if (result < -1 || result > 1) abort();
        if (result == 0) held[key] = value;
        if (is_ours && result == 1 && held.count(key) == 0) abort();
    }

    void remove(const std::string &key) {
        int result = dbm_delete(db, item_of(key));
        if (is_ours && !key.empty() && (result == 0) != (held.count(key) == 1))
            abort();
        if (result == 0) held.erase(key);
    }

    void fetch(const std::string &key, bool aligned) {
        dbm_datum item = aligned ? dbm_alfetch(db, item_of(key))
                                 : dbm_fetch(db, item_of(key));
        if (aligned && reinterpret_cast<uintptr_t>(item.data) % 4 != 0) abort();
        std::optional<std::string> found = bytes_of(item);
        if (!is_ours) return;
        if (found.has_value() != (held.count(key) == 1)) abort();
        if (found && *found != held[key]) abort();
    }

    void list() {
        size_t count = 0;
        dbm_datum key = dbm_firstkey(db);
        while (key.data != nullptr && count < most_keys) {
            std::string bytes = *bytes_of(key);
            if (is_ours && held.count(bytes) != 1) abort();
            ++count;
            if (count % 7 == 3) fetch(bytes, true);
            key = dbm_nextkey(db);
        }
        if (is_ours && count != held.size() && count < most_keys) abort();
        if (key.data == nullptr && (db->flags & io_error) == 0) abort();
    }
};

std::string key_of(reader *input) {
    unsigned kind = input->byte();
    if (kind < 128) return "k" + std::to_string(kind);
    return input->bytes(kind - 128);
}

std::string value_of(reader *input) {
    unsigned kind = input->byte();
    if (kind >= 128) return input->bytes(kind - 128);
    return std::string(kind * 13, static_cast<char>(kind));
}

void operate(session *work, reader *input, const memory_file &pages) {
    unsigned what = input->byte();
    std::string key = key_of(input);
    switch (what % 8) {
        case 0:
        case 1:
        case 2:
            return work->store(key, value_of(input), what % 2);
        case 3:
            return work->remove(key);
        case 4:
            return work->fetch(key, false);
        case 5:
            return work->fetch(key, true);
        case 6:
            return work->list();
        default:
            // Somebody else cuts the file short.
            if (work->is_ours) return;
            if (ftruncate(pages.descriptor, input->byte() * 16) != 0) abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const memory_file directory("directory");
    static const memory_file pages("pages");
    reader input = {data, size};
    unsigned kind = input.byte();
    size_t directory_size = input.byte() * 4;
    size_t pages_size = (input.byte() * 256 + input.byte()) * 4;
    std::string bits = input.bytes(directory_size);
    // Large pages, with items as large, are slow, and no different.
    if (!bits.empty() && kind < large_pages)
        bits[0] = static_cast<char>(bits[0] & 7);
    directory.hold(bits);
    pages.hold(input.bytes(pages_size));
    bool creates = kind % 2 == 1;
    int page_kb = kind / 2 % 4 + 1;
    if (kind >= large_pages) page_kb = 61 + static_cast<int>(kind % 4);
    int flags = O_RDWR | (creates ? O_CREAT | O_TRUNC : 0);
    dbm_handle *db = dbm_prep(directory.path.c_str(), pages.path.c_str(),
                              page_kb, flags, 0666);
    if (db == nullptr) return 0;
    session work = {db, creates, {}};
    for (int i = 0; i < most_operations && input.left > 0; ++i)
        operate(&work, &input, pages);
    for (const auto &[key, value] : contents(work.held))
        work.fetch(key, false);
    dbm_close(db);
    return 0;
}
