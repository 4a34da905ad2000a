// fastout.cc: typed items to blocks of a raw descriptor.
#include "fastout.h"

#include "chkalloc.h"
#include "errexit.h"
#include "ident.h"
#include "private_copy.h"
#include "private_io.h"

#include <stdarg.h>
#include <stdint.h>
#include <string.h>
#include <bit>

namespace {

constexpr int block_size = 2048;
constexpr int longest_number = 11;  // -2147483648, and 37777777777 in octal
static_assert(sizeof(fo::buffer) >= block_size - 1 + longest_number);

enum item : int {
    end_of_items,
    item_string,
    item_character,
    item_octal,
    item_bytes,
    item_octal_too,  // Deliberate: the same (test fo_put_rows)
    item_decimal,
};

// All pairs of digits, "00" first.
template <int base>
struct digit_pairs {
    char pairs[base * base][2];

    consteval digit_pairs() : pairs{} {
        for (int i = 0; i < base * base; i++) {
            pairs[i][0] = static_cast<char>('0' + i / base);
            pairs[i][1] = static_cast<char>('0' + i % base);
        }
    }
};
constexpr digit_pairs<10> decimal{};
constexpr digit_pairs<8> octal{};

constexpr uint32_t powers[] = {
    1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};

// log10(2) is a little more than 1233 / 4096.
unsigned decimal_digits(uint32_t number) {
    number |= 1;
    unsigned guess = static_cast<unsigned>(std::bit_width(number)) * 1233 >> 12;
    return guess + (number >= powers[guess]);
}

char *put_unsigned(char *to, uint32_t number) {
    char *end = to + decimal_digits(number);
    char *at = end;
    for (; number >= 100; number /= 100)
        memcpy(at -= 2, decimal.pairs[number % 100], 2);
    if (number >= 10)
        memcpy(at - 2, decimal.pairs[number], 2);
    else
        at[-1] = static_cast<char>('0' + number);
    return end;
}

char *put_decimal(char *to, int number) {
    uint32_t magnitude = static_cast<uint32_t>(number);
    if (number < 0) {
        *to++ = '-';
        magnitude = 0 - magnitude;
    }
    return put_unsigned(to, magnitude);
}

char *put_octal(char *to, uint32_t number) {
    char *end = to + (std::bit_width(number | 1) + 2) / 3;
    char *at = end;
    for (; number >= 64; number /= 64)
        memcpy(at -= 2, octal.pairs[number % 64], 2);
    if (number >= 8)
        memcpy(at - 2, octal.pairs[number], 2);
    else
        at[-1] = static_cast<char>('0' + number);
    return end;
}

// Where the next item goes.
char *next_place(fo *out) {
    return out->buffer + out->count;
}

// Writes a block out. One that nobody can be told of is dropped: the record
// neither fills up nor tries the same bytes for ever.
//   end       of what was put into the buffer
//   result    the next place
[[gnu::noinline]] char *write_block(fo *out, const char *end) {
    out->count = static_cast<int>(end - out->buffer);
    if (fo_write(out, block_size) != 0) {
        out->count -= block_size;
        memmove(out->buffer, out->buffer + block_size,
                static_cast<size_t>(out->count));
    }
    return next_place(out);
}

// Puts bytes that reach the end of the block.
[[gnu::noinline]] char *put_long(fo *out, char *to, const char *bytes,
                                 size_t n) {
    while (n > 0) {
        auto room = static_cast<size_t>(out->buffer + block_size - to);
        size_t piece = n < room ? n : room;
        memcpy(to, bytes, piece);
        to += piece;
        if (piece == room) to = write_block(out, to);
        bytes += piece;
        n -= piece;
    }
    return to;
}

char *put_bytes(fo *out, char *to, const char *bytes, size_t n) {
    auto room = static_cast<size_t>(out->buffer + block_size - to);
    if (n > tovan::short_run || n >= room) return put_long(out, to, bytes, n);
    tovan::copy_short(to, bytes, n);
    return to + n;
}

}  // namespace

fo *fo_init(int descriptor, const char *name) {
    fo *out = static_cast<fo *>(chkalloc(sizeof *out));
    out->descriptor = descriptor;
    out->count = 0;
    out->name = name;
    return out;
}

int fo_write(fo *out, int n) {
    if (out->descriptor == -1 || n == 0) return 0;
    size_t size = static_cast<size_t>(n);
    if (tovan::write_full(out->descriptor, out->buffer, size) == -1) {
        return out->name != nullptr ? errcheck(-1, out->name) : -1;
    }
    out->count -= n;
    memmove(out->buffer, out->buffer + n, static_cast<size_t>(out->count));
    return 0;
}

int fo_flush(fo *out) {
    return fo_write(out, out->count);
}

// One interpreter loop over the items. What is collected is counted at its
// end, and where somebody looks at it before.
int fo_put(fo *out, ...) {
    if (out->descriptor == -1) return 0;
    char *to = next_place(out);
    const char *block_end = out->buffer + block_size;
    va_list items;
    va_start(items, out);
    while (int code = va_arg(items, int)) {
        switch (code) {
            case item_string: {
                const char *text = va_arg(items, const char *);
                to = put_bytes(out, to, text, strlen(text));
                break;
            }
            case item_character:
                *to++ = static_cast<char>(va_arg(items, int));
                break;
            case item_octal:
            case item_octal_too:
                to = put_octal(to, va_arg(items, unsigned));
                break;
            case item_bytes: {
                const char *bytes = va_arg(items, const char *);
                int n = va_arg(items, int);
                if (n > 0)
                    to = put_bytes(out, to, bytes, static_cast<size_t>(n));
                break;
            }
            case item_decimal:
                to = put_decimal(to, va_arg(items, int));
                break;
            default:
                out->count = static_cast<int>(to - out->buffer);
                errexit("Logic error, fo_put op %d invalid", code);
        }
        if (to >= block_end) to = write_block(out, to);
    }
    va_end(items);
    out->count = static_cast<int>(to - out->buffer);
    return 0;
}

TOVAN_IDENT(fastout, "8.4", "26/11/21")
