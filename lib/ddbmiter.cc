// ddbmiter.cc: all keys of a database.
//
// Pages come as they lie in the file. Most of a file may be holes, pages that
// were never written: the system is asked where data goes on and where it
// ends, and of what lies between, up to 64 KB are read at once. (Holes that are
// read cost more than data: the system makes pages of zeros for them first.)
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
using tovan::read_ahead;

constexpr int ahead_size = 65536;

// Pages of one read ahead; with only one, it goes straight into the buffer.
int64_t pages_at_once(const dbm_handle *db) {
    return db->page_size < ahead_size ? ahead_size / db->page_size : 1;
}

// Number of the page at an offset in the file; the largest for all beyond.
int32_t page_at(const dbm_handle *db, off_t offset) {
    off_t number = offset / db->page_size;
    return number > INT32_MAX ? INT32_MAX : static_cast<int32_t>(number);
}

off_t offset_of(const dbm_handle *db, int64_t number) {
    return static_cast<off_t>(number) * db->page_size;
}

// What seek() gives instead of an offset.
constexpr off_t unknown = -1;
constexpr off_t no_data = -2;

// lseek(2) that leaves errno as it was.
off_t seek(int file, off_t offset, int whence) {
    int before = errno;
    off_t place = lseek(file, offset, whence);
    if (place == -1) place = errno == ENXIO ? no_data : unknown;
    errno = before;
    return place;
}

// Moves on to the page where data starts, if that lies further on, and notes
// where it ends; it goes on for ever where the system does not say.
//   result    false: there is none, and the iteration stands behind the last
//             page
bool skip_hole(dbm_handle *db) {
    read_ahead *ahead = &tovan::rest_of(db)->ahead;
    off_t here = offset_of(db, db->iter_page);
    if (here < ahead->data_end) return true;
    off_t data = seek(db->pag_fd, here, SEEK_DATA);
    bool none = data == no_data;
    if (none) data = seek(db->pag_fd, 0, SEEK_END) + db->page_size - 1;
    int32_t number = page_at(db, data);
    if (number > db->iter_page) db->iter_page = number;
    if (none) return false;
    off_t hole = data >= 0 ? seek(db->pag_fd, data, SEEK_HOLE) : unknown;
    ahead->data_end = hole >= 0 ? hole : INT64_MAX;
    return true;
}

// Where pages are read ahead, and how many: up to a hole. Without memory for
// several, one goes into the buffer.
unsigned char *ahead_room(dbm_handle *db, int64_t *count) {
    read_ahead *ahead = &tovan::rest_of(db)->ahead;
    off_t data = ahead->data_end - offset_of(db, db->iter_page);
    *count = (data - 1) / db->page_size + 1;
    if (*count > pages_at_once(db)) *count = pages_at_once(db);
    if (ahead->room == nullptr && pages_at_once(db) > 1) {
        int before = errno;
        ahead->room = static_cast<unsigned char *>(malloc(ahead_size));
        errno = before;
    }
    if (ahead->room != nullptr) return ahead->room;
    *count = 1;
    return db->page;
}

// Reads pages from `iter_page` on.
//   result    bytes, 0 at the end, -1 with errno. One page that cannot be
//             read does not take those before it along
ssize_t read_pages(dbm_handle *db, unsigned char *room, int64_t count) {
    off_t start = offset_of(db, db->iter_page);
    auto size = static_cast<size_t>(db->page_size);
    auto all = static_cast<size_t>(count) * size;
    ssize_t got = tovan::read_at(db->pag_fd, room, all, start);
    if (got != -1 || count == 1) return got;
    return tovan::read_at(db->pag_fd, room, size, start);
}

// Reads what follows.
//   result    false: the end, or an error
bool read_on(dbm_handle *db) {
    read_ahead *ahead = &tovan::rest_of(db)->ahead;
    ahead->count = 0;
    if (!skip_hole(db)) return false;
    int64_t count;
    unsigned char *room = ahead_room(db, &count);
    tovan::forget_page(db);
    ssize_t got = read_pages(db, room, count);
    if (got <= 0) return false;
    // The last page of the file may be cut.
    int64_t held = (got + db->page_size - 1) / db->page_size;
    auto missing = static_cast<size_t>(offset_of(db, held) - got);
    memset(room + got, 0, missing);
    ahead->first = db->iter_page;
    ahead->count = held;
    return true;
}

// The page `iter_page` among those read ahead; null bytes: not there.
page held_page(dbm_handle *db) {
    const read_ahead *ahead = &tovan::rest_of(db)->ahead;
    int64_t i = db->iter_page - ahead->first;
    if (i < 0 || i >= ahead->count) return {nullptr, 0};
    unsigned char *room = ahead->room != nullptr ? ahead->room : db->page;
    return {room + offset_of(db, i), db->page_size};
}

// Takes a page from those read ahead into the buffer.
bool take_page(dbm_handle *db, page next) {
    if (!tovan::is_valid(next)) {
        errno = EIO;
        return false;
    }
    if (next.bytes != db->page)
        memcpy(db->page, next.bytes, static_cast<size_t>(db->page_size));
    db->page_no = db->iter_page;
    return true;
}

// Goes on to the next page that holds pairs.
//   result    false: the end, or an error
bool advance(dbm_handle *db) {
    while (db->iter_page < INT32_MAX) {
        ++db->iter_page;
        page next = held_page(db);
        if (next.bytes == nullptr && read_on(db)) next = held_page(db);
        if (next.bytes == nullptr) return false;
        if (tovan::entry_count(next) != 0) return take_page(db, next);
    }
    return false;
}

// Key k of the page in the buffer, from 1; the null item: it has fewer.
dbm_datum nth_key(dbm_handle *db, int k) {
    page at = tovan::current_page(db);
    int i = 2 * k - 1;
    return i < tovan::entry_count(at) ? tovan::key_at(at, i) : tovan::null_item;
}

// Deliberate: the end of an iteration and a failure look alike (test
// the_end_of_the_iteration_looks_like_a_failure).
dbm_datum end_iteration(dbm_handle *db) {
    tovan::forget_ahead(db);
    tovan::forget_page(db);
    db->flags |= tovan::io_error;
    return tovan::null_item;
}

}  // namespace

dbm_datum dbm_firstkey(dbm_handle *db) {
    if (db == nullptr) {
        errno = EINVAL;
        return tovan::null_item;
    }
    tovan::forget_ahead(db);
    if (!tovan::read_page(db, 0)) return end_iteration(db);
    db->page_no = 0;
    db->iter_page = 0;
    db->iter_key = 0;
    return dbm_nextkey(db);
}

dbm_datum dbm_nextkey(dbm_handle *db) {
    if (db == nullptr) {
        errno = EINVAL;
        return tovan::null_item;
    }
    // Chosen: the page of the iteration comes back when a look-up has brought
    // another one, so that a look-up of any key between two steps does no harm.
    if (!tovan::load_page(db, db->iter_page)) return end_iteration(db);
    dbm_datum key = nth_key(db, ++db->iter_key);
    if (key.data != nullptr) return key;
    db->iter_key = 0;
    if (!advance(db)) return end_iteration(db);
    db->iter_key = 1;
    return nth_key(db, 1);
}

TOVAN_IDENT(ddbmiter, "8.4", "26/11/22")
