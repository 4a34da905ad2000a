// keyed.cc: what the keyed databases share.
#include "kdbminit.h"

#include "dystr.h"
#include "ident.h"
#include "private_io.h"
#include "private_keyed.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace {

constexpr int new_file_mode = 0644;
constexpr int open_mode = 0666;  // for the database, which creates nothing

constexpr int read_only_flag = 1;  // of a handle
constexpr int error_flag = 2;
constexpr int replacing = 1;       // mode of dbm_store()

bool make_file(const char *path, const void *bytes, size_t count) {
    constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC;
    int descriptor = tovan::open_file(path, flags, new_file_mode);
    if (descriptor == -1) return false;
    int result = tovan::write_full(descriptor, bytes, count);
    int reason = errno;
    close(descriptor);
    errno = reason;
    return result == 0;
}

// Chosen: a page size that cannot be written counts as a file that cannot be
// created, so that a full disk is told at the file that it met.
const char *make_files(const char *name, const char *dir_path,
                       unsigned char page_kb) {
    if (!make_file(dir_path, &page_kb, sizeof page_kb))
        return "Cannot create new '.dir' file";
    char *pag_path = tovan::suffixed(name, ".pag");
    bool is_made = make_file(pag_path, nullptr, 0);
    tovan::release(pag_path);
    return is_made ? nullptr : "Cannot create new '.pag' file";
}

bool is_made_anew(const char *dir_path, int mode) {
    if (mode == tovan::update_mode) return access(dir_path, W_OK) == -1;
    return mode == tovan::anew_mode;
}

}  // namespace

const char *tovan::open_pages(const char *name, int mode, unsigned char page_kb,
                              dbm_handle **handle, bool *is_new) {
    char *dir_path = suffixed(name, ".dir");
    *is_new = is_made_anew(dir_path, mode);
    const char *message =
        *is_new ? make_files(name, dir_path, page_kb) : nullptr;
    release(dir_path);
    if (message != nullptr) return message;
    bool updates = mode == anew_mode || mode == update_mode;
    *handle = dbm_open(name, updates ? O_RDWR : O_RDONLY, open_mode);
    return *handle != nullptr ? nullptr : "dbminit failed";
}

char *tovan::suffixed(const char *name, const char *suffix) {
    dy path;
    dynew(&path, 0);
    dystr(&path, name);
    return dystr(&path, suffix);
}

void tovan::release(void *block) {
    int reason = errno;
    free(block);
    errno = reason;
}

bool tovan::is_read_only(const dbm_handle *handle) {
    return (handle->flags & read_only_flag) != 0;
}

dbm_datum tovan::item_of(const char *text) {
    size_t size = strlen(text) + 1;
    int length = size < INT_MAX ? static_cast<int>(size) : INT_MAX;
    return {const_cast<char *>(text), length};
}

// Chosen: a page that cannot be read is no reason to start a new value: what
// was collected would be lost once it can be read again. Whether this very
// call failed, only a flag that was clear before can tell.
bool tovan::fetch_known(dbm_handle *handle, dbm_datum key, dbm_datum *known) {
    int flags_before = handle->flags;
    handle->flags &= ~error_flag;
    *known = dbm_fetch(handle, key);
    bool has_failed = (handle->flags & error_flag) != 0;
    handle->flags |= flags_before;
    return !has_failed;
}

bool tovan::has_too_many(const char *key, size_t length, int *printed) {
    if (strlen(key) + 1 + length <= most_record) return false;
    *printed = fprintf(stderr, "%s: too many entries\n", key);
    return true;
}

int tovan::replace_value(dbm_handle *handle, dbm_datum key, char *bytes,
                         size_t length) {
    return dbm_store(handle, key, {bytes, static_cast<int>(length)}, replacing);
}

TOVAN_IDENT(keyed, "8.4", "26/11/22")
