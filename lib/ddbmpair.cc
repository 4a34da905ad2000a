// ddbmpair.cc: pairs in a page of a database.
//
//     | n | entries 1 .. n | free | value 2, key 2 | value 1, key 1 |
//     0   2                2n+2   entry n                     page end
//
// Entries are where items start: key 1, value 1, key 2, ... downward from the
// end of the page; an item ends where the one before it starts.
#include "private_ddbm.h"

#include "ident.h"

#include <string.h>

namespace {

using tovan::entry;
using tovan::entry_count;
using tovan::page;

void set_word(unsigned char *bytes, int value) {
    bytes[0] = static_cast<unsigned char>(value >> 8);
    bytes[1] = static_cast<unsigned char>(value);
}

void set_entry(page at, int i, int offset) {
    set_word(at.bytes + 2 * i, offset);
}

int end_of_entries(int count) {
    return 2 * count + 2;
}

// Bytes of the pair whose first entry is number i.
int pair_size(page at, int i) {
    return entry(at, i - 1) - entry(at, i + 1);
}

// Where the lowest item starts once pair `old` is gone.
int lowest_without(page at, int old) {
    return entry(at, entry_count(at)) + (old != 0 ? pair_size(at, old) : 0);
}

// Items are not as small as a call of memcpy() likes them, and may lie in
// the page itself.
void copy_item(unsigned char *to, dbm_datum item) {
    if (item.length > 0)
        memmove(to, item.data, static_cast<size_t>(item.length));
}

}  // namespace

bool tovan::is_valid(page at) {
    int count = entry_count(at);
    if (count % 2 != 0 || end_of_entries(count) > at.size) return false;
    int boundary = at.size;
    for (int i = 1; i <= count; ++i) {
        int start = entry(at, i);
        if (start > boundary) return false;
        boundary = start;
    }
    return end_of_entries(count) <= boundary;
}

int tovan::find_pair(page at, dbm_datum key) {
    int count = entry_count(at);
    int boundary = at.size;
    auto length = static_cast<size_t>(key.length);
    for (int i = 1; i < count; i += 2) {
        int start = entry(at, i);
        if (boundary - start == key.length &&
            memcmp(at.bytes + start, key.data, length) == 0)
            return i;
        boundary = entry(at, i + 1);
    }
    return 0;
}

bool tovan::fits(page at, int old, int need) {
    int count = entry_count(at) - (old != 0 ? 2 : 0);
    return end_of_entries(count + 2) + need <= lowest_without(at, old);
}

bool tovan::can_remove(page at, int old) {
    if (old == 0 || old + 2 > entry_count(at)) return true;
    return entry(at, old + 2) + pair_size(at, old) <= largest_offset;
}

bool tovan::can_put(page at, int old, dbm_datum key) {
    return can_remove(at, old) &&
           lowest_without(at, old) - key.length <= largest_offset;
}

void tovan::remove_pair(page at, int i) {
    int count = entry_count(at);
    int gap = pair_size(at, i);
    int lowest = entry(at, count);
    auto later = static_cast<size_t>(entry(at, i + 1) - lowest);
    memmove(at.bytes + lowest + gap, at.bytes + lowest, later);
    for (int j = i; j < count - 1; ++j)
        set_entry(at, j, entry(at, j + 2) + gap);
    set_word(at.bytes, count - 2);
}

void tovan::put_pair(page at, dbm_datum key, dbm_datum value) {
    int count = entry_count(at);
    int key_start = entry(at, count) - key.length;
    int value_start = key_start - value.length;
    copy_item(at.bytes + key_start, key);
    copy_item(at.bytes + value_start, value);
    set_entry(at, count + 1, key_start);
    set_entry(at, count + 2, value_start);
    set_word(at.bytes, count + 2);
}

TOVAN_IDENT(ddbmpair, "8.4", "26/11/22")
