// ldbminit.cc: lists of lines under names, on disk
// (docs/formats/keyed-database.md).
#include "ldbminit.h"

#include "dystr.h"
#include "ident.h"
#include "private_keyed.h"

#include <errno.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

namespace {

constexpr unsigned char page_kb = 1;  // on disk: do not change
constexpr size_t offset_size = 4;     // on disk: do not change
constexpr size_t line_room = 512;     // of a line that is read, with its NUL

// Where a key's lines start, while one is added. Filled by ldbmadd() for each
// call.
constinit char record[tovan::most_record] = {};

void close_index(ldbm_db *db) {
    if (db->handle == nullptr) return;
    dbm_close(db->handle);
    if (db->data != nullptr) fclose(db->data);
    free(db->name);
    *db = {};
}

// "e": the stream's descriptor is nothing for commands.
const char *stream_mode(int mode, bool is_new) {
    if (is_new) return "w+e";
    return mode == tovan::update_mode ? "a+e" : "re";
}

FILE *open_stream(const char *path, const char *mode) {
    FILE *stream;
    do {
        stream = fopen(path, mode);
    } while (stream == nullptr && errno == EINTR);
    return stream;
}

const char *open_files(ldbm_db *db, const char *name, int mode) {
    bool is_new;
    const char *message =
        tovan::open_pages(name, mode, page_kb, &db->handle, &is_new);
    if (message != nullptr) return message;
    char *data_path = tovan::suffixed(name, ".data");
    db->data = open_stream(data_path, stream_mode(mode, is_new));
    tovan::release(data_path);
    if (db->data != nullptr) return nullptr;
    int reason = errno;
    dbm_close(db->handle);
    db->handle = nullptr;
    errno = reason;
    return "open of data file failed";
}

// Writes a line at the end of the data file.
//   offset    where it starts
//   result    0, or -1 with errno
// Chosen: the line leaves the stream's buffer before its place is stored. A
// process that dies would otherwise leave places where nothing, and soon
// another key's line, is.
// Chosen: a line whose offset does not fit four bytes is refused.
int append_line(FILE *data, const char *line, uint32_t *offset) {
    if (fseeko(data, 0, SEEK_END) == -1) return -1;
    off_t end = ftello(data);
    if (end == -1) return -1;
    if (end > off_t{UINT32_MAX}) {
        errno = EFBIG;
        return -1;
    }
    *offset = static_cast<uint32_t>(end);
    if (fputs(line, data) == EOF || putc('\n', data) == EOF) return -1;
    return fflush(data) == EOF ? -1 : 0;
}

void put_offset(char *place, uint32_t offset) {
    for (size_t i = offset_size; i > 0; i--) {
        place[i - 1] = static_cast<char>(offset);
        offset >>= 8;
    }
}

uint32_t get_offset(const char *place) {
    uint32_t offset = 0;
    for (size_t i = 0; i < offset_size; i++)
        offset = offset << 8 | static_cast<unsigned char>(place[i]);
    return offset;
}

// Reads the line at an offset and hands it on; 1, or 0 when there is none.
int deliver_line(ldbm_db *db, const char *key, uint32_t offset) {
    char line[line_room];
    if (fseeko(db->data, static_cast<off_t>(offset), SEEK_SET) == -1) return 0;
    if (fgets(line, line_room, db->data) == nullptr) return 0;
    if (db->callback != nullptr) db->callback(key, line);
    return 1;
}

}  // namespace

const char *ldbminit(ldbm_db *db, const char *name, int mode,
                     void (*callback)(const char *key, const char *line)) {
    // The name may be the one that closing releases.
    char *kept =
        mode != tovan::close_mode ? tovan::suffixed(name, "") : nullptr;
    close_index(db);
    if (mode == tovan::close_mode) return nullptr;
    *db = {};
    const char *message = open_files(db, kept, mode);
    if (message != nullptr) {
        tovan::release(kept);
        return message;
    }
    db->name = kept;
    db->callback = callback;
    return nullptr;
}

int ldbmadd(ldbm_db *db, const char *key, const char *value) {
    if (db->handle == nullptr || tovan::is_read_only(db->handle))
        return fprintf(stderr, "database not updatable\n");
    uint32_t offset;
    if (append_line(db->data, value, &offset) == -1) return -1;
    dbm_datum name = tovan::item_of(key);
    dbm_datum known;
    if (!tovan::fetch_known(db->handle, name, &known)) return -1;
    size_t length = static_cast<size_t>(known.length);
    int printed;
    if (known.data != nullptr) {
        if (tovan::has_too_many(key, length + offset_size, &printed))
            return printed;
        memcpy(record, known.data, length);
    }
    put_offset(record + length, offset);
    return tovan::replace_value(db->handle, name, record, length + offset_size);
}

int ldbmfind(ldbm_db *db, const char *key) {
    if (db->handle == nullptr) {
        fprintf(stderr, "database not open\n");
        return 0;
    }
    dbm_datum known = dbm_alfetch(db->handle, tovan::item_of(key));
    // A copy: the callback may look for something else.
    dy offsets;
    dynew(&offsets, known.length + 1);
    dynstr(&offsets, known.data, known.length);
    int lines = 0;
    size_t length = static_cast<size_t>(known.length);
    for (size_t at = 0; at + offset_size <= length; at += offset_size)
        lines += deliver_line(db, key, get_offset(offsets.buffer + at));
    free(offsets.buffer);
    return lines;
}

TOVAN_IDENT(ldbminit, "8.4", "26/11/22")
