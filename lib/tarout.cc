// tarout.cc: tar archives on standard output (docs/formats/tar.md).
#include "tarout.h"

#include "chkalloc.h"
#include "errexit.h"
#include "ident.h"
#include "private_archout.h"
#include "private_error.h"
#include "private_linktab.h"

#include <errno.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace {

constexpr size_t block_size = 512;
constexpr size_t longest_name = 99;
constexpr int no_override = -1;

// on disk: do not change
struct field {
    size_t offset;
    size_t width;
    size_t digits;  // octal, with blanks in front and a blank behind
};

constexpr field name_field{0, 100, 0};
constexpr field mode_field{100, 8, 6};
constexpr field uid_field{108, 8, 6};
constexpr field gid_field{116, 8, 6};
constexpr field size_field{124, 12, 11};
constexpr field time_field{136, 12, 11};
constexpr field sum_field{148, 8, 6};
constexpr field type_field{156, 1, 0};
constexpr field link_field{157, 100, 0};
constexpr field unused_field{257, 255, 0};

constexpr field layout[] = {name_field, mode_field,  uid_field, gid_field,
                            size_field, time_field,  sum_field, type_field,
                            link_field, unused_field};

consteval bool fields_touch() {
    size_t end = 0;
    for (field each : layout) {
        if (each.offset != end) return false;
        end += each.width;
    }
    return end == block_size;
}
static_assert(fields_touch());

constexpr char hard_link = '1';
constexpr char symbolic_link = '2';
constexpr mode_t mode_mask = 07777;
constexpr uint64_t largest_owner = 0777777;
constexpr int64_t largest_size = 077777777777;

// progname, when there is one, and the message.
[[gnu::format(printf, 1, 2)]] void warn(const char *format, ...) {
    if (progname != nullptr) eprintf("%s: ", progname);
    va_list arguments;
    va_start(arguments, format);
    tovan::verror(format, arguments, "\n");
    va_end(arguments);
}

void report_write() {
    warn("standard output: %s", syserr());
}

// A full record is written at once.
constinit char room[tovan::record_room];
constinit tovan::record_output output{
    tovan::tar_record, tovan::tar_record, report_write, room, 0, 0};

// The archive. Filled by tarinit() and remember(), emptied by tardone().
struct archive {
    bool is_open;
    int uid;
    int gid;
    tovan::link_table links;
};
constinit archive current{false, no_override, no_override, {}};

// The target of the last symbolic link. Filled by read_link().
constinit char link_target[longest_name + 1];

void require_init() {
    if (!current.is_open) errexit("logic error - tarinit() not done");
}

void forget_links() {
    tovan::link_table *links = &current.links;
    for (uint32_t i = 0; i < links->count; i++)
        free(links->files[i].path);
    tovan::clear_links(links);
}

// A number as "%6o " and "%11lo " write one that fits.
void set(char *header, field which, uint64_t number) {
    tovan::put_octal(header + which.offset, which.digits, number, ' ');
    header[which.offset + which.digits] = ' ';
}

uint64_t owner_of(const char *name, int override, unsigned own,
                  const char *what) {
    unsigned number =
        override != no_override ? static_cast<unsigned>(override) : own;
    if (number > largest_owner) warn("%s %s does not fit", name, what);
    return number & largest_owner;
}

// The sum of the bytes of a header, by the type of a byte.
template <typename Byte>
int sum_of(const char *header) {
    int sum = 0;
    for (size_t i = 0; i < block_size; i++)
        sum += static_cast<Byte>(header[i]);
    return sum;
}

// Chosen: names of many bytes above 0x7f make the signed sum negative, which
// the field has no digits for. Readers take the unsigned sum as well.
void set_sum(char *header) {
    memset(header + sum_field.offset, ' ', sum_field.width);
    int sum = sum_of<signed char>(header);
    if (sum < 0) sum = sum_of<unsigned char>(header);
    set(header, sum_field, static_cast<uint64_t>(sum));
    header[sum_field.offset + sum_field.digits] = '\0';
}

void set_link(char *header, const char *name, const struct stat *status,
              const char *link) {
    bool is_symbolic = S_ISLNK(status->st_mode);
    header[type_field.offset] = is_symbolic ? symbolic_link : hard_link;
    if (strlen(link) > longest_name) warn("%s link target too long", name);
    strncpy(header + link_field.offset, link, longest_name);
}

const char *read_link(const char *path) {
    // One character more than counts tells a longer target.
    ssize_t length = readlink(path, link_target, sizeof link_target);
    if (length == -1) return nullptr;
    if (static_cast<size_t>(length) > longest_name) {
        warn("%s link target too long", path);
        length = longest_name;
    }
    link_target[length] = '\0';
    return link_target;
}

bool has_other_names(const struct stat *status) {
    return status->st_nlink >= 2 && !S_ISLNK(status->st_mode);
}

// The link target of an entry, or null; nothing is remembered.
const char *known_target(const char *path, const struct stat *status) {
    if (S_ISLNK(status->st_mode)) return read_link(path);
    if (!has_other_names(status)) return nullptr;
    const tovan::linked_file *first =
        tovan::find_linked(&current.links, status->st_dev, status->st_ino);
    return first != nullptr ? first->path : nullptr;
}

void remember(const char *path, const struct stat *status) {
    if (!has_other_names(status)) return;
    tovan::add_linked(&current.links, status->st_dev, status->st_ino)->path =
        savestr(path);
}

// Queues content as whole blocks.
//   result    0, or an errno
int put_content(const char *name, int descriptor, int64_t size) {
    if (size <= 0) return 0;
    int error;
    int64_t missing = tovan::put_file(&output, descriptor, size, &error);
    tovan::put_zeros(&output, -static_cast<uint64_t>(size) % block_size);
    if (missing == 0) return 0;
    // Chosen: the rest is filled up, so that the entries behind it are found.
    if (error != 0) warn("tarout %s", errmsg(error));
    warn("%s shrank, filled with zeros", name);
    return error != 0 ? error : EIO;
}

// Reports the path and the errno, which is the result.
int refuse(const char *path) {
    int reason = errno;
    warn("%s %s", path, errmsg(reason));
    return reason;
}

// The name of the number that the header has no room for, or null.
const char *misfit(int64_t size, const struct stat *status) {
    auto fits = [](int64_t n) { return n >= 0 && n <= largest_size; };
    if (!fits(size)) return "size";
    if (!fits(status->st_mtime)) return "modification time";
    return nullptr;
}

int put_file(const char *path, const char *name, const struct stat *status,
             int64_t size) {
    // Before the header: what cannot be read leaves nothing behind.
    int descriptor = tovan::open_member(path);
    if (descriptor == -1) return refuse(path);
    remember(path, status);
    tarheader(name, 0, status, size, nullptr);
    int failure = put_content(name, descriptor, size);
    close(descriptor);
    return failure;
}

int put_entry(const char *path, const char *name, const struct stat *status,
              int64_t size) {
    bool is_directory = S_ISDIR(status->st_mode);
    if (is_directory) size = 0;
    const char *what = misfit(size, status);
    if (what != nullptr) {
        warn("%s %s does not fit", name, what);
        return EOVERFLOW;
    }
    if (is_directory) {
        tarheader(name, static_cast<int>(strlen(name)), status, 0, nullptr);
        return 0;
    }
    const char *link = known_target(path, status);
    if (link == nullptr) return put_file(path, name, status, size);
    // Deliberate: the header keeps the size, though no content follows (test
    // link_entries_keep_their_size).
    tarheader(name, 0, status, size, link);
    return 0;
}

int put(const char *path, const char *name, const struct stat *status) {
    if (path == nullptr) {
        warn("No input file specified");
        return EINVAL;
    }
    const char *recorded = name != nullptr ? name : path;
    if (strlen(recorded) > longest_name) {
        warn("%s name too long", recorded);
        return ENAMETOOLONG;
    }
    struct stat own;
    if (lstat(path, &own) == -1) return refuse(path);
    struct stat named;
    if (status == nullptr) {
        bool is_there = name != nullptr && lstat(name, &named) == 0;
        status = is_there ? &named : &own;
    }
    return put_entry(path, recorded, status, own.st_size);
}

}  // namespace

void tarinit(int uid, int gid) {
    forget_links();
    current.uid = uid;
    current.gid = gid;
    current.is_open = true;
    tovan::start_records(&output);
}

void tarout(const char *path, const char *name, const struct stat *status) {
    require_init();
    int failure = output.failure == 0 ? put(path, name, status) : 0;
    errno = output.failure != 0 ? output.failure : failure;
}

void tardone(void) {
    require_init();
    tovan::put_zeros(&output, 2 * block_size);
    if (output.held > 0)
        tovan::put_zeros(&output, tovan::tar_record - output.held);
    forget_links();
    current.is_open = false;
    errno = output.failure;
}

void tarheader(const char *name, int directory_length,
               const struct stat *status, long size, const char *link) {
    char header[block_size] = {};
    strncpy(header, name, name_field.width);
    auto end = static_cast<size_t>(directory_length);
    if (directory_length > 0 && end < name_field.width) header[end] = '/';
    set(header, mode_field, status->st_mode & mode_mask);
    set(header, uid_field,
        owner_of(name, current.uid, status->st_uid, "owner"));
    set(header, gid_field,
        owner_of(name, current.gid, status->st_gid, "group"));
    set(header, size_field, static_cast<uint64_t>(size));
    set(header, time_field, static_cast<uint64_t>(status->st_mtime));
    if (link != nullptr) set_link(header, name, status, link);
    set_sum(header);
    tarwrite(header);
}

void tarcontents(int descriptor, long size) {
    put_content("tarout", descriptor, size);
}

void tarwrite(const char *block) {
    tovan::put_bytes(&output, block, block_size);
}

const char *tarlnname(const char *path, const struct stat *status) {
    const char *link = known_target(path, status);
    if (link == nullptr && !S_ISLNK(status->st_mode)) remember(path, status);
    return link;
}

TOVAN_IDENT(tarout, "8.4", "26/11/22")
