// ddbm.cc: opening and closing databases (docs/formats/database.md).
#include "ddbm.h"

#include "ident.h"
#include "private_ddbm.h"
#include "private_io.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int usual_page_kb = 1;
constexpr int most_page_kb = 255;  // on disk: one byte

// The page behind the record must leave the rest aligned.
static_assert(sizeof(dbm_handle) % alignof(tovan::handle_rest) == 0);
static_assert(1024 % alignof(tovan::handle_rest) == 0);

// Closes a file on the way out of a failure, which errno is about.
void close_after_failure(int descriptor) {
    int reason = errno;
    close(descriptor);
    errno = reason;
}

// A database is never write-only. Chosen: nor is it appended to, since pages
// are written where they belong.
int usable_flags(int flags) {
    if ((flags & O_WRONLY) != 0) flags = (flags & ~O_WRONLY) | O_RDWR;
    return flags & ~O_APPEND;
}

// Directory bits of a file of so many bytes; as many as have a number.
int32_t bits_of_size(off_t size) {
    off_t bytes = size - 1;
    return bytes > INT32_MAX / 8 ? INT32_MAX : static_cast<int32_t>(bytes * 8);
}

bool write_page_size(int dir_fd, int page_kb) {
    auto byte = static_cast<unsigned char>(page_kb);
    return tovan::write_full(dir_fd, &byte, 1) == 0;
}

// Reads what a directory file says about its database.
//   fails     false with errno; EINVAL: empty, or no page size
bool read_page_size(int dir_fd, int *page_kb, int32_t *dir_bits) {
    unsigned char byte = 0;
    if (tovan::read_some(dir_fd, &byte, 1) == -1) return false;
    struct stat status;
    if (fstat(dir_fd, &status) == -1) return false;
    if (status.st_size == 0 || byte == 0) {
        errno = EINVAL;
        return false;
    }
    *page_kb = byte;
    *dir_bits = bits_of_size(status.st_size);
    return true;
}

// A handle with its page, the rest, and room for a second page, in one block.
dbm_handle *new_handle(int page_kb) {
    int page_size = page_kb * 1024;
    size_t size = sizeof(dbm_handle) + sizeof(tovan::handle_rest) +
                  2 * static_cast<size_t>(page_size);
    auto *db = static_cast<dbm_handle *>(calloc(1, size));
    if (db == nullptr) {
        errno = ENOMEM;
        return nullptr;
    }
    db->page_size = page_size;
    db->page = reinterpret_cast<unsigned char *>(db + 1);
    tovan::handle_rest *rest = tovan::rest_of(db);
    rest->before = reinterpret_cast<unsigned char *>(rest + 1);
    db->dir_block_no = -1;
    db->page_no = -1;
    return db;
}

}  // namespace

dbm_handle *dbm_open(const char *base, int flags, int mode) {
    if (base == nullptr || *base == '\0') {
        errno = EINVAL;
        return nullptr;
    }
    size_t length = strlen(base);
    size_t size = length + sizeof ".dir";
    auto *names = static_cast<char *>(malloc(2 * size));
    if (names == nullptr) {
        errno = ENOMEM;
        return nullptr;
    }
    char *dir = names;
    char *pag = names + size;
    memcpy(dir, base, length);
    memcpy(dir + length, ".dir", sizeof ".dir");
    memcpy(pag, base, length);
    memcpy(pag + length, ".pag", sizeof ".pag");
    dbm_handle *db = dbm_prep(dir, pag, usual_page_kb, flags, mode);
    int reason = errno;
    free(names);
    errno = reason;
    return db;
}

dbm_handle *dbm_prep(const char *dir, const char *pag, int page_kb, int flags,
                     int mode) {
    if (dir == nullptr || pag == nullptr) {
        errno = EINVAL;
        return nullptr;
    }
    flags = usable_flags(flags);
    int dir_fd = tovan::open_file(dir, flags, mode);
    if (dir_fd == -1) return nullptr;
    int32_t dir_bits = 0;
    bool creates = (flags & O_CREAT) != 0;
    // Deliberate: the directory file stays open (test
    // a_refused_page_size_leaves_the_directory_file_open).
    if (creates && (page_kb < 1 || page_kb > most_page_kb)) {
        errno = EINVAL;
        return nullptr;
    }
    bool known = creates ? write_page_size(dir_fd, page_kb)
                         : read_page_size(dir_fd, &page_kb, &dir_bits);
    dbm_handle *db = known ? new_handle(page_kb) : nullptr;
    int pag_fd = db != nullptr ? tovan::open_file(pag, flags, mode) : -1;
    if (pag_fd == -1) {
        close_after_failure(dir_fd);
        free(db);
        return nullptr;
    }
    db->dir_fd = dir_fd;
    db->pag_fd = pag_fd;
    db->dir_bits = dir_bits;
    if ((flags & O_ACCMODE) == O_RDONLY) db->flags = tovan::opened_read_only;
    return db;
}

void dbm_close(dbm_handle *db) {
    if (db == nullptr) {
        errno = EINVAL;
        return;
    }
    close(db->dir_fd);
    close(db->pag_fd);
    tovan::release_directory(db);
    free(tovan::rest_of(db)->ahead.room);
    free(db->split_new);
    free(db->split_copy);
    free(db);
}

TOVAN_IDENT(ddbm, "8.4", "26/11/22")
