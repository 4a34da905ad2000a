// cpioput.cc: cpio archives on standard output (docs/formats/cpio.md).
#include "cpioput.h"

#include "errexit.h"
#include "ident.h"
#include "private_archout.h"
#include "private_linktab.h"

#include <errno.h>
#include <stdint.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

namespace {

// on disk: do not change
enum field {
    magic,
    device,
    inode,
    mode,
    owner,
    group,
    link_count,
    special_device,
    modification_time,
    name_size,
    file_size,
    field_count,
};

struct layout_row {
    const char *name;
    size_t offset;
    size_t width;
};

constexpr layout_row layout[] = {
    {"magic", 0, 6},
    {"device", 6, 6},
    {"inode", 12, 6},
    {"mode", 18, 6},
    {"owner", 24, 6},
    {"group", 30, 6},
    {"link count", 36, 6},
    {"special device", 42, 6},
    {"modification time", 48, 11},
    {"name size", 59, 6},
    {"file size", 65, 11},
};
constexpr size_t header_size = 76;

consteval bool rows_touch() {
    size_t end = 0;
    for (const layout_row &row : layout) {
        if (row.offset != end) return false;
        end += row.width;
    }
    return end == header_size;
}
static_assert(sizeof layout / sizeof *layout == field_count && rows_touch());

constexpr uint64_t magic_number = 070707;
constexpr uint64_t device_mask = 0xffff;
constexpr uint64_t largest_number = 0777777;  // six digits
constexpr uint64_t no_number = largest_number + 1;
constexpr uint64_t largest_size = 0xffffffff;  // two halves of 16 bits
constexpr size_t longest_name = 257;
constexpr char last_name[] = "TRAILER!!!";
constexpr size_t padding = 81920;  // pushes out the block of the trailer
static_assert(padding % tovan::cpio_record == 0);

constexpr struct stat no_status {};

void report_write() {
    eprintf("Can't write to std out!\n");
}

// A full block waits for the next byte.
constinit char room[tovan::record_room];
constinit tovan::record_output output{
    tovan::cpio_record, tovan::cpio_record + 1, report_write, room, 0, 0};

// The archive. Filled by cpiosetup(), and its tables by number_of(); they are
// released by the next cpiosetup().
struct archive {
    bool uses_now;
    time_t now;
    tovan::link_table linked;   // number: what stands for the inode
    tovan::link_table numbers;  // those numbers, as inodes of the cut device
    uint64_t untried;           // numbers below it may be free
};
constinit archive current{};

// The header of the entry at hand. Filled by stage_name() and bintochar().
struct staged_entry {
    size_t name_size;  // with its NUL
    char name[longest_name + 1];
    char header[500];
};
constinit staged_entry staged{};
static_assert(header_size + sizeof staged.name <= sizeof staged.header);

void set(field which, uint64_t number) {
    const layout_row *row = layout + which;
    tovan::put_octal(staged.header + row->offset, row->width, number, '0');
}

bool is_taken(uint64_t cut_device, uint64_t number) {
    return tovan::find_linked(&current.numbers, cut_device, number) != nullptr;
}

// A number that no linked file has. They are tried from the largest down:
// small file systems use the small ones.
uint64_t free_number(uint64_t cut_device) {
    while (current.untried > 0) {
        uint64_t number = --current.untried;
        if (!is_taken(cut_device, number)) return number;
    }
    return no_number;
}

bool has_other_names(const struct stat *status) {
    return status->st_nlink > 1 && !S_ISDIR(status->st_mode);
}

// What stands for the inode of a file: readers take files with several links,
// equal devices and equal numbers for one file.
//   result    no_number when none is left
// Chosen: a number that fits is changed too where a larger one, cut, has come
// before it: the archive would lose the second file otherwise.
uint64_t number_of(const struct stat *status) {
    uint64_t number = status->st_ino & largest_number;
    bool is_linked = has_other_names(status);
    if (!is_linked && number == status->st_ino) return number;
    const tovan::linked_file *known =
        tovan::find_linked(&current.linked, status->st_dev, status->st_ino);
    if (known != nullptr) return known->number;
    uint64_t cut_device = status->st_dev & device_mask;
    if (is_taken(cut_device, number)) number = free_number(cut_device);
    if (!is_linked) return number;
    tovan::add_linked(&current.linked, status->st_dev, status->st_ino)->number =
        static_cast<unsigned>(number);
    if (number != no_number)
        tovan::add_linked(&current.numbers, cut_device, number);
    return number;
}

// Chosen: without a number of its own a linked file gets the link count 1: it
// is stored whole each time, and not taken for another.
void set_links(const struct stat *status) {
    uint64_t number = number_of(status);
    bool is_alone = number == no_number && has_other_names(status);
    set(inode, number);
    set(link_count, is_alone ? 1 : status->st_nlink);
}

// The name of what the header has no room for, or null. The numbers of
// devices and inodes are cut instead.
const char *misfit(const char *name, off_t size, const struct stat *status) {
    auto is_32_bit = [](int64_t n) {
        return n >= 0 && static_cast<uint64_t>(n) <= largest_size;
    };
    if (strlen(name) > longest_name) return "name";
    if (!is_32_bit(size)) return layout[file_size].name;
    if (!current.uses_now && !is_32_bit(status->st_mtime))
        return layout[modification_time].name;
    if (status->st_uid > largest_number) return layout[owner].name;
    if (status->st_gid > largest_number) return layout[group].name;
    if (status->st_nlink > largest_number) return layout[link_count].name;
    return nullptr;
}

const char *without_dot(const char *name) {
    return strncmp(name, "./", 2) == 0 ? name + 2 : name;
}

// Puts the header, or reports what does not fit.
//   shown     the name in the report
//   result    0, or an errno
int put_header(const char *shown, off_t size, const struct stat *status) {
    const char *name = without_dot(shown);
    const char *what = misfit(name, size, status);
    if (what != nullptr) {
        eprintf("Can't archive `%s': %s does not fit\n", shown, what);
        return EOVERFLOW;
    }
    staged.name_size = strlen(name) + 1;
    memcpy(staged.name, name, staged.name_size);
    bintochar(size, status);
    tovan::put_bytes(&output, staged.header, header_size + staged.name_size);
    return 0;
}

// Readers look for content behind the headers of files and links only.
bool has_content(const char *path, const struct stat *found,
                 const struct stat *status) {
    if (!S_ISREG(found->st_mode)) return false;
    if (S_ISREG(status->st_mode)) return true;
    struct stat unfollowed;
    return S_ISLNK(status->st_mode) && lstat(path, &unfollowed) == 0 &&
           S_ISREG(unfollowed.st_mode);
}

int put_content(const char *name, int descriptor, off_t size) {
    int error;
    if (tovan::put_file(&output, descriptor, size, &error) == 0) return 0;
    // Chosen: the rest is filled up, so that the entries behind it are found.
    if (error != 0) eprintf("Cannot read temp file\n");
    eprintf("`%s' shrank, filled with zeros\n", name);
    return error != 0 ? error : EIO;
}

int put_opened(int descriptor, const char *path, const char *name,
               const struct stat *status) {
    struct stat found;
    if (fstat(descriptor, &found) == -1) {
        int reason = errno;
        eprintf("Cannot stat `%s'\n", name);
        return reason;
    }
    if (status == nullptr) status = &found;
    off_t size = has_content(path, &found, status) ? found.st_size : 0;
    int failure = put_header(name, size, status);
    return failure != 0 ? failure : put_content(name, descriptor, size);
}

int put_file(const char *path, const char *name, const struct stat *status) {
    int descriptor = tovan::open_member(path);
    if (descriptor == -1) {
        int reason = errno;
        eprintf("Can't open `%s'\n", name);
        return reason;
    }
    int failure = put_opened(descriptor, path, name, status);
    close(descriptor);
    return failure;
}

int put_last(const char *name, const struct stat *status) {
    int failure = put_header(name, 0, status != nullptr ? status : &no_status);
    tovan::put_zeros(&output, padding);
    return failure;
}

}  // namespace

void cpiosetup(int use_now) {
    tovan::clear_links(&current.linked);
    tovan::clear_links(&current.numbers);
    current = {};
    current.uses_now = use_now != 0;
    if (current.uses_now) current.now = time(nullptr);
    current.untried = no_number;
    tovan::start_records(&output);
}

void cpioput(const char *path, const char *name, const struct stat *status) {
    int failure = 0;
    if (output.failure == 0) {
        failure = path != nullptr ? put_file(path, name, status)
                                  : put_last(name, status);
    }
    errno = output.failure != 0 ? output.failure : failure;
}

void cpiofin(void) {
    cpioput(nullptr, last_name, nullptr);
}

void bintochar(long size, const struct stat *status) {
    if (status == nullptr) status = &no_status;
    time_t changed = current.uses_now ? current.now : status->st_mtime;
    set(magic, magic_number);
    set(device, status->st_dev & device_mask);
    set(mode, status->st_mode);
    set(owner, status->st_uid);
    set(group, status->st_gid);
    set_links(status);
    set(special_device, status->st_rdev & device_mask);
    set(modification_time, static_cast<uint64_t>(changed) & largest_size);
    set(name_size, staged.name_size);
    set(file_size, static_cast<uint64_t>(size) & largest_size);
    memcpy(staged.header + header_size, staged.name, staged.name_size);
}

void writehdr(const char *bytes, int count) {
    if (count > 0) {
        tovan::put_bytes(&output, bytes, static_cast<size_t>(count));
    }
}

long mklong(const unsigned short halves[2]) {
    return static_cast<long>(halves[0]) << 16 | halves[1];
}

TOVAN_IDENT(cpioput, "8.4", "26/11/22")
