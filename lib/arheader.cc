// arheader.cc: the headers of archives (docs/formats/ar.md).
//
// Members are short in some archives and long in others. Where headers lie
// close together it is cheaper to read all that lies between them, 64 KB at a
// time; where they lie far apart, to read little more than each header. So
// the stretch that is read at a time doubles when the next header was not far
// behind the window, and shrinks when it was.
#include "u_arlist.h"

#include "convert.h"
#include "errexit.h"
#include "ident.h"
#include "private_arlist.h"
#include "private_io.h"

#include <fcntl.h>
#include <string.h>
#include <unistd.h>

namespace {

constexpr char magic[] = "!<arch>\n";
constexpr size_t magic_size = sizeof magic - 1;

// A header as it lies in the file.
struct raw_header {
    char name[tovan::ar_name_width];
    char mtime[12];
    char uid[6];
    char gid[6];
    char mode[8];
    char size[10];
    char mark[2];
};
static_assert(sizeof(raw_header) == 60);

constexpr char end_mark[] = {'`', '\n'};

constexpr size_t least_stretch = 512;
constexpr size_t most_stretch = 65536;  // and the size of the window
constexpr off_t near =
    4096;  // reading so many bytes takes a system call's time

// A stretch of the archive that is being read. Filled by hold().
constinit char window[most_stretch] = {};

constexpr int64_t highest_position = INT32_MAX;

void choose_stretch(tovan::archive *a, off_t gap) {
    if (gap > near) {
        a->stretch = a->stretch / 4;
        if (a->stretch < least_stretch) a->stretch = least_stretch;
    } else if (a->stretch < most_stretch) {
        a->stretch *= 2;
    }
}

ssize_t read_on(tovan::archive *a, size_t count) {
    char *free_room = window + a->held;
    if (!a->can_seek) return tovan::read_some(a->descriptor, free_room, count);
    off_t end = a->start + static_cast<off_t>(a->held);
    return tovan::read_at(a->descriptor, free_room, count, end);
}

// Moves the window so that it starts at the next header.
void move_window(tovan::archive *a) {
    off_t end = a->start + static_cast<off_t>(a->held);
    size_t tail = 0;
    if (a->position < end) tail = static_cast<size_t>(end - a->position);
    memmove(window, window + a->held - tail, tail);
    choose_stretch(a, tail > 0 ? 0 : a->position - end);
    a->start = a->position;
    a->held = tail;
}

// Sees to it that `count` bytes from the position on are in the window.
//   result    1, or 0 when the file ends before; -1 with errno
int hold(tovan::archive *a, size_t count) {
    off_t end = a->start + static_cast<off_t>(a->held);
    if (end - a->position >= static_cast<off_t>(count)) return 1;
    move_window(a);
    while (a->held < count) {
        ssize_t got = read_on(a, a->stretch - a->held);
        if (got <= 0) return static_cast<int>(got);
        a->held += static_cast<size_t>(got);
    }
    return 1;
}

const char *at_position(const tovan::archive *a) {
    return window + (a->position - a->start);
}

// Whether a file that may be growing holds the bytes before `end`.
bool reaches(tovan::archive *a, int64_t end) {
    if (end <= a->size) return true;
    a->size = lseek(a->descriptor, 0, SEEK_END);
    return end <= a->size;
}

// The number in a field: digits, with blanks around them only.
//   result    -1 when it is no such number
template <size_t width>
int64_t plain_number(const char (&field)[width]) {
    size_t i = 0;
    while (i < width && field[i] == ' ')
        i++;
    if (i == width) return -1;
    int64_t number = 0;
    for (; i < width && '0' <= field[i] && field[i] <= '9'; i++)
        number = number * 10 + (field[i] - '0');
    while (i < width && field[i] == ' ')
        i++;
    return i == width ? number : -1;
}

[[noreturn]] void malformed(int64_t behind_header) {
    errexit("malformed archive -- could not read entry header at %ld",
            static_cast<long>(behind_header));
}

// The size of the data, which starts at `data`.
int64_t checked_size(tovan::archive *a, const raw_header *header,
                     int64_t data) {
    if (memcmp(header->mark, end_mark, sizeof end_mark) != 0) malformed(data);
    if (!a->can_seek) errexit("Seek failed");
    int64_t size = plain_number(header->size);
    if (size < 0 || data + size > highest_position) malformed(data);
    if (!reaches(a, data + size)) malformed(data);
    return size;
}

void copy_name(tovan::ar_entry *entry, const raw_header *header) {
    size_t length = sizeof header->name;
    while (length > 0 && header->name[length - 1] == ' ')
        length--;
    if (length > 0 && header->name[length - 1] == '/') length--;
    memcpy(entry->name, header->name, length);
    entry->name[length] = '\0';
    entry->length = static_cast<int>(strlen(entry->name));
}

}  // namespace

void tovan::open_archive(archive *a, const char *path) {
    *a = {};
    a->path = path;
    a->descriptor = errcheck(open_file(path, O_RDONLY, 0666), path);
    a->size = lseek(a->descriptor, 0, SEEK_END);
    a->can_seek = a->size != -1;
    a->stretch = least_stretch;
    // A directory, say, is no archive either: nothing is said about why.
    if (hold(a, magic_size) != 1)
        errexit("%s: could not read ar(1) magic", path);
    if (memcmp(at_position(a), magic, magic_size) != 0)
        errexit("%s: does not contain ar(1) magic", path);
    a->position = magic_size;
}

bool tovan::next_entry(archive *a, ar_entry *entry) {
    if (errcheck(hold(a, sizeof(raw_header)), a->path) == 0) return false;
    raw_header header;
    memcpy(&header, at_position(a), sizeof header);
    int64_t data = a->position + static_cast<off_t>(sizeof header);
    int64_t size = checked_size(a, &header, data);
    copy_name(entry, &header);
    entry->mtime = atoin(header.mtime, sizeof header.mtime);
    entry->offset = static_cast<int32_t>(data);
    entry->size = static_cast<int32_t>(size);
    a->position = data + size + (size & 1);
    return true;
}

TOVAN_IDENT(arheader, "8.4", "26/11/22")
