// kdbminit.cc: texts under names, on disk (docs/formats/keyed-database.md).
#include "kdbminit.h"

#include "ident.h"
#include "private_keyed.h"

#include <stdio.h>
#include <string.h>

namespace {

constexpr unsigned char page_kb = 4;  // on disk: do not change

// What kdbmfind() found last.
constinit dbm_datum found{};

void close_database(kdbm_db *db) {
    if (db->handle == nullptr) return;
    dbm_close(db->handle);
    tovan::release(db->path);
    *db = {};
}

// Stores the known text, the separator in place of its NUL, and the new text.
int store_joined(kdbm_db *db, dbm_datum key, dbm_datum known, dbm_datum added,
                 int separator) {
    size_t known_size = static_cast<size_t>(known.length);
    size_t added_size = static_cast<size_t>(added.length);
    int printed;
    if (tovan::has_too_many(key.data, known_size + added_size, &printed))
        return printed;
    char joined[tovan::most_record];
    // A text of another origin may be quite empty, without a NUL.
    size_t length = known_size > 0 ? known_size - 1 : 0;
    memcpy(joined, known.data, length);
    joined[length++] = static_cast<char>(separator);
    memcpy(joined + length, added.data, added_size);
    return tovan::replace_value(db->handle, key, joined, length + added_size);
}

}  // namespace

const char *kdbminit(kdbm_db *db, const char *name, int mode) {
    close_database(db);
    if (mode == tovan::close_mode) return nullptr;
    bool is_new;
    const char *message =
        tovan::open_pages(name, mode, page_kb, &db->handle, &is_new);
    db->path = message == nullptr ? tovan::suffixed(name, ".dir") : nullptr;
    return message;
}

int kdbmadd(kdbm_db *db, const char *key, const char *value, int separator) {
    if (db->handle == nullptr) return fprintf(stderr, "database not opened\n");
    if (tovan::is_read_only(db->handle))
        return fprintf(stderr, "database not updatable\n");
    dbm_datum name = tovan::item_of(key);
    if (value == nullptr) return dbm_delete(db->handle, name);
    dbm_datum added = tovan::item_of(value);
    dbm_datum known{};
    if (separator != 0 && !tovan::fetch_known(db->handle, name, &known))
        return -1;
    if (known.data != nullptr)
        return store_joined(db, name, known, added, separator);
    return tovan::replace_value(db->handle, name, added.data,
                                static_cast<size_t>(added.length));
}

dbm_datum *kdbmfind(kdbm_db *db, const char *key) {
    if (db->handle == nullptr) {
        fprintf(stderr, "database not open\n");
        return nullptr;
    }
    found = dbm_fetch(db->handle, tovan::item_of(key));
    return found.data != nullptr ? &found : nullptr;
}

TOVAN_IDENT(kdbminit, "8.4", "26/11/22")
