// ddbmget.cc: values by key.
#include "ddbm.h"

#include "ident.h"
#include "private_ddbm.h"

#include <errno.h>

// An unreadable directory ends the walk as a clear bit does; what is not
// found on the page there is missing, and `flags` says that the answer is
// uncertain.
dbm_datum dbm_fetch(dbm_handle *db, dbm_datum key) {
    if (db == nullptr || !tovan::is_key(key)) {
        errno = EINVAL;
        return tovan::null_item;
    }
    uint32_t hash = dbm_hash(key.data, key.length);
    if (!tovan::find_leaf(db, hash)) db->flags |= tovan::io_error;
    if (!tovan::load_page(db, static_cast<int32_t>(hash & db->hash_mask))) {
        db->flags |= tovan::io_error;
        return tovan::null_item;
    }
    tovan::page at = tovan::current_page(db);
    int i = tovan::find_pair(at, key);
    return i != 0 ? tovan::value_at(at, i) : tovan::null_item;
}

TOVAN_IDENT(ddbmget, "8.4", "26/11/22")
