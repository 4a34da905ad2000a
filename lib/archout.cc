// archout.cc: archives on standard output, in records.
#include "private_archout.h"

#include "ident.h"
#include "private_io.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

using tovan::record_output;

namespace {

constexpr uint64_t octal_base = 8;

void give_up(record_output *out) {
    out->failure = errno;
    out->held = 0;
    out->report();
}

// Writes the records that are complete and keeps the rest, at the front.
void send_records(record_output *out) {
    size_t sent = 0;
    while (out->held - sent >= out->trigger) {
        const char *record = out->room + sent;
        if (tovan::write_full(STDOUT_FILENO, record, out->record) == -1) {
            return give_up(out);
        }
        sent += out->record;
    }
    if (sent == 0) return;
    out->held -= sent;
    memmove(out->room, out->room + sent, out->held);
}

char *free_room(const record_output *out) {
    return out->room + out->held;
}

// How much of n bytes goes to the free room.
size_t fitting(const record_output *out, uint64_t n) {
    size_t room = tovan::record_room - out->held;
    return n < room ? static_cast<size_t>(n) : room;
}

// Takes n bytes in that were put to the free room.
void advance(record_output *out, size_t n) {
    out->held += n;
    send_records(out);
}

}  // namespace

void tovan::start_records(record_output *out) {
    out->held = 0;
    out->failure = 0;
}

void tovan::put_bytes(record_output *out, const char *bytes, size_t n) {
    while (n > 0 && out->failure == 0) {
        size_t piece = fitting(out, n);
        memcpy(free_room(out), bytes, piece);
        advance(out, piece);
        bytes += piece;
        n -= piece;
    }
}

void tovan::put_zeros(record_output *out, uint64_t n) {
    while (n > 0 && out->failure == 0) {
        size_t piece = fitting(out, n);
        memset(free_room(out), 0, piece);
        advance(out, piece);
        n -= piece;
    }
}

int64_t tovan::put_file(record_output *out, int descriptor, int64_t size,
                        int *error) {
    *error = 0;
    int64_t left = size;
    while (left > 0 && out->failure == 0) {
        size_t wanted = fitting(out, static_cast<uint64_t>(left));
        ssize_t got = read_some(descriptor, free_room(out), wanted);
        if (got <= 0) {
            *error = got == -1 ? errno : 0;
            put_zeros(out, static_cast<uint64_t>(left));
            return left;
        }
        advance(out, static_cast<size_t>(got));
        left -= got;
    }
    return 0;
}

int tovan::open_member(const char *path) {
    return open_file(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
}

void tovan::put_octal(char *field, size_t width, uint64_t number, char pad) {
    char *at = field + width;
    do {
        *--at = static_cast<char>('0' + number % octal_base);
        number /= octal_base;
    } while (number != 0 && at > field);
    memset(field, pad, static_cast<size_t>(at - field));
}

TOVAN_IDENT(archout, "8.4", "26/11/22")
