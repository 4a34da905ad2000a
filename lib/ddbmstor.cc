// ddbmstor.cc: changes of a database: storing, splitting pages, deleting.
//
// A page without room is split by the next bit of its keys' hashes:
//
//     page 01, depth 2   ->   page 001 (the old half), page 101 (the new one)
//
// There are three writes, and the process may die between any two of them:
//
//     1. the new half      nobody looks there yet; the old page has all pairs
//     2. the directory bit both pages are reached, and hold what belongs there;
//                          the old page also holds pairs that are not looked
//                          for there any more
//     3. the old half
//
// A write that fails may have put the beginning of a page over the old one:
// then what was there is written again, as far as the system lets us.
//
// The pair that is stored goes into its half before that is written. If it
// does not fit there either, that half is split next, up to ten times. A pair
// that is to be replaced is carried along until the write that brings the new
// one, and not counted when room is reckoned.
#include "ddbm.h"

#include "ident.h"
#include "private_ddbm.h"
#include "private_io.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace {

using tovan::page;

constexpr int most_splits = 10;
constexpr char no_room[] = "glaibri: cannot insert after SPLTMAX attempts.\n";

// The highest bit by which a page can be split: its number has 31.
constexpr uint32_t last_split_bit = uint32_t{1} << 30;

// A pair on its way into the database.
struct arrival {
    dbm_datum key;
    dbm_datum value;
    int need;  // bytes of both
    uint32_t hash;
    bool replaces;  // the key is there
};

// What came of one step.
enum class step { done, goes_on, refused, failed };

// Whether this handle may be changed at this key; errno says why not.
bool may_change(dbm_handle *db, dbm_datum key) {
    if (db == nullptr || !tovan::is_key(key)) {
        errno = EINVAL;
        return false;
    }
    if ((db->flags & tovan::opened_read_only) != 0) {
        errno = EPERM;
        return false;
    }
    return true;
}

// Whether a pair can be in a page of its own.
bool is_storable(const dbm_handle *db, dbm_datum key, dbm_datum value) {
    if (value.length < 0) return false;
    if (value.data == nullptr && value.length > 0) return false;
    int64_t need = int64_t{key.length} + value.length;
    return need <= db->page_size - tovan::empty_overhead;
}

// Brings the page of a hash into the buffer. Chosen: no guess where the
// directory cannot be read; what is stored in the wrong page is lost.
bool locate(dbm_handle *db, uint32_t hash) {
    return tovan::find_leaf(db, hash) &&
           tovan::load_page(db, static_cast<int32_t>(hash & db->hash_mask));
}

step refuse() {
    errno = EINVAL;
    return step::refused;
}

// Writes the page in the buffer.
//   before    what the file holds of it, or as good
bool write_over(dbm_handle *db, const unsigned char *before) {
    if (tovan::write_page(db, db->page_no, db->page)) return true;
    int reason = errno;
    tovan::write_page(db, db->page_no, before);
    errno = reason;
    return false;
}

// Whether memory and the file agree on the page in the buffer is not known.
step fail(dbm_handle *db) {
    tovan::forget_page(db);
    return step::failed;
}

void keep_page(dbm_handle *db) {
    memcpy(tovan::rest_of(db)->before, db->page,
           static_cast<size_t>(db->page_size));
}

// Writes a page from which a pair was removed; it was kept before.
step write_changed(dbm_handle *db) {
    return write_over(db, tovan::rest_of(db)->before) ? step::done : fail(db);
}

// Writes a page to which a pair was added. Without it in the count, the page
// is as good as it was.
step write_longer(dbm_handle *db) {
    if (tovan::write_page(db, db->page_no, db->page)) return step::done;
    page at = tovan::current_page(db);
    tovan::remove_pair(at, tovan::entry_count(at) - 1);
    int reason = errno;
    tovan::write_page(db, db->page_no, db->page);
    errno = reason;
    return fail(db);
}

// Puts the pair into a page in memory, in place of the old one if that is
// there. In the half of a page that was split nothing is left of the old pair:
// the new one is larger and lies over it.
//   result    goes_on: there is no room
step put_arrival(page at, const arrival &pair) {
    int old = pair.replaces ? tovan::find_pair(at, pair.key) : 0;
    if (!tovan::fits(at, old, pair.need)) return step::goes_on;
    if (!tovan::can_put(at, old, pair.key)) return refuse();
    if (old != 0) tovan::remove_pair(at, old);
    tovan::put_pair(at, pair.key, pair.value);
    return step::done;
}

bool has_scratch_pages(dbm_handle *db) {
    if (db->split_copy != nullptr) return true;
    auto size = static_cast<size_t>(db->page_size);
    auto *first = static_cast<unsigned char *>(malloc(size));
    auto *second = static_cast<unsigned char *>(malloc(size));
    if (first == nullptr || second == nullptr) {
        free(first);
        free(second);
        errno = ENOMEM;
        return false;
    }
    db->split_new = first;
    db->split_copy = second;
    return true;
}

// Divides the buffer's page between it and `split_new`, in memory; the whole
// is in `split_copy` then.
//   fails     false: an offset would pass what an entry holds
bool divide_page(dbm_handle *db, uint32_t split_bit) {
    page old_half = tovan::current_page(db);
    page new_half = {db->split_new, db->page_size};
    page whole = {db->split_copy, db->page_size};
    auto size = static_cast<size_t>(db->page_size);
    memcpy(whole.bytes, old_half.bytes, size);
    memset(old_half.bytes, 0, size);
    memset(new_half.bytes, 0, size);
    for (int i = 1; i < tovan::entry_count(whole); i += 2) {
        dbm_datum key = tovan::key_at(whole, i);
        bool moves = (dbm_hash(key.data, key.length) & split_bit) != 0;
        page half = moves ? new_half : old_half;
        if (!tovan::can_put(half, 0, key)) return false;
        tovan::put_pair(half, key, tovan::value_at(whole, i));
    }
    return true;
}

// Writes both halves of a page and the bit between them.
bool write_halves(dbm_handle *db, int32_t new_page) {
    return tovan::write_page(db, new_page, db->split_new) &&
           tovan::set_leaf_bit(db) && write_over(db, db->split_copy);
}

// Splits the page in the buffer; the half of the arriving pair is there then.
//   result    goes_on: it still does not fit
step split_page(dbm_handle *db, const arrival &pair) {
    uint32_t split_bit = db->hash_mask + 1;
    if (split_bit > last_split_bit) {
        errno = EFBIG;
        return step::failed;
    }
    bool in_new = (pair.hash & split_bit) != 0;
    auto size = static_cast<size_t>(db->page_size);
    page half = {in_new ? db->split_new : db->page, db->page_size};
    step put = divide_page(db, split_bit) ? put_arrival(half, pair) : refuse();
    if (put == step::refused) {
        memcpy(db->page, db->split_copy, size);
        return put;
    }
    auto new_page =
        static_cast<int32_t>((pair.hash & db->hash_mask) | split_bit);
    if (!write_halves(db, new_page)) return fail(db);
    if (in_new) {
        db->page_no = new_page;
        memcpy(db->page, db->split_new, size);
    }
    if (put == step::done) return put;
    db->cur_bit = tovan::child_of(db->cur_bit, in_new);
    db->hash_mask |= split_bit;
    return put;
}

// Splits until the pair is stored.
step make_room(dbm_handle *db, const arrival &pair) {
    if (!has_scratch_pages(db)) return step::failed;
    for (int i = 0; i < most_splits; ++i) {
        step result = split_page(db, pair);
        if (result != step::goes_on) return result;
    }
    tovan::write_full(STDERR_FILENO, no_room, sizeof no_room - 1);
    errno = ENOSPC;
    return step::failed;
}

step store(dbm_handle *db, const arrival &pair) {
    if (pair.replaces) keep_page(db);
    step put = put_arrival(tovan::current_page(db), pair);
    if (put == step::goes_on) return make_room(db, pair);
    if (put == step::refused) return put;
    return pair.replaces ? write_changed(db) : write_longer(db);
}

// What a caller is told.
int result_of(dbm_handle *db, step last) {
    if (last == step::done) return 0;
    return last == step::refused ? -1 : tovan::io_failed(db);
}

}  // namespace

int dbm_store(dbm_handle *db, dbm_datum key, dbm_datum value, int mode) {
    if (!may_change(db, key)) return -1;
    if (!is_storable(db, key, value)) {
        errno = EINVAL;
        return -1;
    }
    uint32_t hash = dbm_hash(key.data, key.length);
    if (!locate(db, hash)) return tovan::io_failed(db);
    bool is_there = tovan::find_pair(tovan::current_page(db), key) != 0;
    if (is_there && mode != tovan::store_replaces) return 1;
    int need = key.length + value.length;
    return result_of(db, store(db, {key, value, need, hash, is_there}));
}

int dbm_delete(dbm_handle *db, dbm_datum key) {
    if (!may_change(db, key)) return -1;
    if (!locate(db, dbm_hash(key.data, key.length)))
        return tovan::io_failed(db);
    page at = tovan::current_page(db);
    int i = tovan::find_pair(at, key);
    if (i == 0) return -1;
    if (!tovan::can_remove(at, i)) return result_of(db, refuse());
    keep_page(db);
    tovan::remove_pair(at, i);
    return result_of(db, write_changed(db));
}

TOVAN_IDENT(ddbmstor, "8.4", "26/11/22")
