// ddbmpage.cc: pages of a database, to and from the file.
//
// Chosen: pages are read, not mapped. With a mapping a random look-up would
// take 0.6 of the time (bench/ddbm_bench.cc, fetch_1m/mapping); but touching one
// whose file was cut short ends the process with a signal, and no test
// beforehand can exclude that.
#include "private_ddbm.h"

#include "ident.h"
#include "private_io.h"

#include <errno.h>
#include <string.h>

namespace {

off_t offset_of(dbm_handle *db, int32_t page) {
    return static_cast<off_t>(page) * db->page_size;
}

}  // namespace

bool tovan::read_page(dbm_handle *db, int32_t page) {
    auto size = static_cast<size_t>(db->page_size);
    ssize_t got = read_at(db->pag_fd, db->page, size, offset_of(db, page));
    if (got == -1) return false;
    auto filled = static_cast<size_t>(got);
    if (filled < size) memset(db->page + filled, 0, size - filled);
    if (is_valid(current_page(db))) return true;
    errno = EIO;
    return false;
}

bool tovan::load_page(dbm_handle *db, int32_t page) {
    if (page == db->page_no) return true;
    if (read_page(db, page)) {
        db->page_no = page;
        return true;
    }
    int reason = errno;
    if (db->page_no != -1 && !read_page(db, db->page_no)) forget_page(db);
    errno = reason;
    return false;
}

bool tovan::write_page(dbm_handle *db, int32_t page,
                       const unsigned char *bytes) {
    forget_ahead(db);
    return write_at(db->pag_fd, bytes, static_cast<size_t>(db->page_size),
                    offset_of(db, page)) == 0;
}

TOVAN_IDENT(ddbmpage, "8.4", "26/11/22")
