// private_archout.h (private): archives on standard output, in records.
// Builds on: nothing.
//
// Both archive writers send records of one size, each with one write(2). Files
// are read to where the records are written from, so that nothing is copied
// in memory but headers and the rest of an unfinished record.
#ifndef TOVAN_PRIVATE_ARCHOUT_H
#define TOVAN_PRIVATE_ARCHOUT_H

#include <stddef.h>
#include <stdint.h>

namespace [[gnu::visibility("hidden")]] tovan {

constexpr size_t cpio_record = 5120;
constexpr size_t tar_record = 10240;

// Room for a read of 60 KB at least. Reads fill it to its end, which is then
// the end of a record of either size.
constexpr size_t record_room = 71680;
static_assert(record_room % cpio_record == 0 && record_room % tar_record == 0);

// Between calls fewer than `trigger` bytes are held.
struct record_output {
    size_t record;     // the size of a record
    size_t trigger;    // so many bytes send one
    void (*report)();  // called for the write that fails, with its errno
    char *room;        // record_room bytes
    size_t held;       // bytes in it
    int failure;       // that errno; from then on everything is dropped
};

// Forgets what is held and what has failed.
void start_records(record_output *out);

void put_bytes(record_output *out, const char *bytes, size_t n);
void put_zeros(record_output *out, uint64_t n);

// Puts the next `size` bytes of a descriptor, and zeros for those that it
// does not deliver.
//   error     where the errno of a failed read goes, or 0
//   result    the number of zeros
int64_t put_file(record_output *out, int descriptor, int64_t size, int *error);

// open(2) for reading a file into an archive: no pipe without a writer keeps
// it waiting, and no terminal becomes the process's own.
int open_member(const char *path);

// The last `width` octal digits of a number, with `pad` in front.
void put_octal(char *field, size_t width, uint64_t number, char pad);

}  // namespace tovan

#endif
