// ddbmalgn.cc: values by key, at addresses that suit numbers.
#include "ddbm.h"

#include "ident.h"
#include "private_ddbm.h"
#include "strutil.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>

namespace {

// The copy of the last value that did not lie right, for all handles. Grows in
// dbm_alfetch(); never released.
struct aligned_copy {
    char *bytes;
    size_t size;
};
alignas(4) constinit char usual_room[1024];
constinit aligned_copy copy = {usual_room, sizeof usual_room};

bool make_room(size_t size) {
    if (size <= copy.size) return true;
    void *old = copy.bytes != usual_room ? copy.bytes : nullptr;
    void *larger = realloc(old, size);
    if (larger == nullptr) return false;
    copy = {static_cast<char *>(larger), size};
    return true;
}

}  // namespace

dbm_datum dbm_alfetch(dbm_handle *db, dbm_datum key) {
    dbm_datum value = dbm_fetch(db, key);
    auto address = reinterpret_cast<uintptr_t>(value.data);
    if (address == wordalign(address)) return value;
    auto size = static_cast<size_t>(value.length);
    if (!make_room(size)) {
        errno = ENOMEM;
        return tovan::null_item;
    }
    memcpy(copy.bytes, value.data, size);
    return {copy.bytes, value.length};
}

TOVAN_IDENT(ddbmalgn, "8.4", "26/11/22")
