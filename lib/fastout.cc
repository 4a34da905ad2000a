// fastout.cc: typed items to blocks of a raw descriptor.
#include "fastout.h"

#include "chkalloc.h"
#include "errexit.h"
#include "ident.h"
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

struct digit_pair {
    char text[2];
};

consteval digit_pair pair_of(int number) {
    return {{static_cast<char>('0' + number / 10),
             static_cast<char>('0' + number % 10)}};
}

// "00" to "99".
struct pair_table {
    digit_pair pairs[100];

    consteval pair_table() : pairs{} {
        for (int i = 0; i < 100; i++)
            pairs[i] = pair_of(i);
    }
};
constexpr pair_table two_digits{};

constexpr uint32_t powers[] = {
    1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};

// log10(2) is a little more than 1233 / 4096.
unsigned decimal_digits(uint32_t number) {
    unsigned guess =
        static_cast<unsigned>(std::bit_width(number | 1)) * 1233 >> 12;
    return guess + (number >= powers[guess]);
}

char *put_unsigned(char *to, uint32_t number) {
    char *end = to + (number == 0 ? 1 : decimal_digits(number));
    char *at = end;
    for (; number >= 100; number /= 100)
        memcpy(at -= 2, two_digits.pairs[number % 100].text, 2);
    if (number >= 10)
        memcpy(at - 2, two_digits.pairs[number].text, 2);
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
    do {
        *--at = static_cast<char>('0' + (number & 7));
        number >>= 3;
    } while (at > to);
    return end;
}

// A block that nobody can be told of is dropped: the record neither fills up
// nor tries the same bytes for ever.
void write_block(fo *out) {
    if (fo_write(out, block_size) == 0) return;
    out->count -= block_size;
    memmove(out->buffer, out->buffer + block_size,
            static_cast<size_t>(out->count));
}

void put_bytes(fo *out, const char *bytes, size_t n) {
    while (n > 0) {
        size_t room = static_cast<size_t>(block_size - out->count);
        size_t piece = n < room ? n : room;
        memcpy(out->buffer + out->count, bytes, piece);
        out->count += static_cast<int>(piece);
        if (out->count == block_size) write_block(out);
        bytes += piece;
        n -= piece;
    }
}

void end_item(fo *out, const char *end) {
    out->count = static_cast<int>(end - out->buffer);
    if (out->count >= block_size) write_block(out);
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

// One interpreter loop over the items.
int fo_put(fo *out, ...) {
    if (out->descriptor == -1) return 0;
    va_list items;
    va_start(items, out);
    while (int code = va_arg(items, int)) {
        char *to = out->buffer + out->count;
        switch (code) {
            case item_string: {
                const char *text = va_arg(items, const char *);
                put_bytes(out, text, strlen(text));
                break;
            }
            case item_character:
                *to = static_cast<char>(va_arg(items, int));
                end_item(out, to + 1);
                break;
            case item_octal:
            case item_octal_too:
                end_item(out, put_octal(to, va_arg(items, unsigned)));
                break;
            case item_bytes: {
                const char *bytes = va_arg(items, const char *);
                int n = va_arg(items, int);
                if (n > 0) put_bytes(out, bytes, static_cast<size_t>(n));
                break;
            }
            case item_decimal:
                end_item(out, put_decimal(to, va_arg(items, int)));
                break;
            default:
                errexit("Logic error, fo_put op %d invalid", code);
        }
    }
    va_end(items);
    return 0;
}

TOVAN_IDENT(fastout, "8.4", "26/11/21")
