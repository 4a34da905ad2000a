// dbpages.cc: the files of a page database as they are.
#include "vop/dbpages.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <tovan/chkalloc.h>
#include <tovan/errexit.h>
#include <tovan/private_io.h>
#include <tovan/private_keyed.h>
#include <unistd.h>

using vop::page_files;

namespace {

constexpr size_t page_unit = 1024;  // what the directory's first byte counts
constexpr size_t offset_size = 2;

size_t number_at(const unsigned char *bytes) {
    return static_cast<size_t>(bytes[0]) << 8 | bytes[1];
}

size_t entry(const page_files *files, size_t index) {
    return number_at(files->page + index * offset_size);
}

// Where what lies above an entry's item starts.
size_t boundary(const page_files *files, size_t index) {
    return index > 1 ? entry(files, index - 1) : files->page_size;
}

int as_int(size_t number) {
    return static_cast<int>(number);
}

}  // namespace

// Never waits for the other end of a pipe.
int vop::open_part(const char *path, off_t *size) {
    int descriptor =
        errcheck(open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK), path);
    struct stat status;
    errcheck(fstat(descriptor, &status), path);
    if (!S_ISREG(status.st_mode)) errexit("%s: not a regular file", path);
    *size = status.st_size;
    return descriptor;
}

size_t vop::read_range(int descriptor, const char *path, off_t at,
                       unsigned char *bytes, size_t size) {
    ssize_t got = tovan::read_at(descriptor, bytes, size, at);
    if (got == -1) errexit("%s: %s", path, syserr());
    auto held = static_cast<size_t>(got);
    memset(bytes + held, 0, size - held);
    return held;
}

off_t vop::next_data(int descriptor, off_t at, off_t size) {
    if (at >= size) return size;
    off_t data = lseek(descriptor, at, SEEK_DATA);
    if (data != -1) return data;
    return errno == ENXIO ? size : at;
}

page_files vop::open_pages(const char *name) {
    page_files files{};
    files.dir_path = tovan::suffixed(name, ".dir");
    files.pag_path = tovan::suffixed(name, ".pag");
    files.dir = open_part(files.dir_path, &files.dir_size);
    files.pag = open_part(files.pag_path, &files.pag_size);
    unsigned char page_kb;
    read_range(files.dir, files.dir_path, 0, &page_kb, sizeof page_kb);
    files.page_size = page_kb * page_unit;
    files.page = static_cast<unsigned char *>(chkalloc(files.page_size));
    return files;
}

void vop::close_pages(page_files *files) {
    close(files->dir);
    close(files->pag);
    free(files->dir_path);
    free(files->pag_path);
    free(files->page);
}

off_t vop::read_page_from(page_files *files, off_t number) {
    auto size = static_cast<off_t>(files->page_size);
    off_t at = next_data(files->pag, number * size, files->pag_size);
    if (at >= files->pag_size) return -1;
    number = at / size;
    files->held = read_range(files->pag, files->pag_path, number * size,
                             files->page, files->page_size);
    return number;
}

bool vop::is_valid_page(const page_files *files, dy *flaw) {
    size_t entries = entry(files, 0);
    size_t table_end = (entries + 1) * offset_size;
    if (entries % 2 != 0) {
        dyfmt(flaw, "@d offsets, which is odd", as_int(entries));
        return false;
    }
    if (table_end > files->page_size) {
        dyfmt(flaw, "@d offsets, too many for it", as_int(entries));
        return false;
    }
    for (size_t i = 1; i <= entries; i++) {
        if (entry(files, i) <= boundary(files, i)) continue;
        dyfmt(flaw, "pair @d: the @s starts at @d, above @d",
              as_int((i + 1) / 2), i % 2 != 0 ? "key" : "value",
              as_int(entry(files, i)), as_int(boundary(files, i)));
        return false;
    }
    if (entries > 0 && entry(files, entries) < table_end) {
        dyfmt(flaw, "the items reach down to @d, into the offsets",
              as_int(entry(files, entries)));
        return false;
    }
    return true;
}

size_t vop::pair_count(const page_files *files) {
    return entry(files, 0) / 2;
}

vop::page_pair vop::pair_at(const page_files *files, size_t number) {
    size_t index = 2 * number - 1;
    size_t key = entry(files, index);
    size_t value = entry(files, index + 1);
    auto *page = reinterpret_cast<const char *>(files->page);
    return {page + key, boundary(files, index) - key, page + value,
            key - value};
}
