// add_map.cc: the records of the root maps and the index that finds equal
// ones.
#include "map_root.h"

#include "chkalloc.h"
#include "dypadd.h"
#include "ident.h"
#include "private_hash.h"
#include "private_map_root.h"

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

namespace {

constexpr int first_capacity = 32;

constexpr uint32_t first_slots = 64;  // a power of two

// A place of the index; an empty one has record 0.
struct map_slot {
    uint32_t tag;
    int record;  // one more than its index
};

// Records in the order of their first appearance, and an open-addressing
// index over them that is at most half full. Filled by add_map(); holds for
// the process; a record's texts are released when they are replaced.
struct map_state {
    dyd records;
    map_slot *slots;
    uint32_t slot_count;  // a power of two, or 0
};
constinit map_state maps{};

maprec *record_of(const map_slot *slot) {
    return static_cast<maprec *>(maps.records.data) + slot->record - 1;
}

bool is_equal(const maprec *record, const maprec *other) {
    return record->type == other->type && record->fromlen == other->fromlen &&
           memcmp(record->from, other->from,
                  static_cast<size_t>(record->fromlen)) == 0;
}

uint32_t tag_of(const maprec *record) {
    size_t length = static_cast<size_t>(record->fromlen);
    return tovan::text_tag(record->from, length) +
           static_cast<uint32_t>(record->type);
}

// The slot of an equal record, or the empty one where it belongs.
map_slot *find_slot(uint32_t tag, const maprec *wanted) {
    for (uint32_t at = tag;; ++at) {
        map_slot *slot = &maps.slots[at & (maps.slot_count - 1)];
        if (slot->record == 0) return slot;
        if (slot->tag == tag && is_equal(record_of(slot), wanted)) return slot;
    }
}

// A filled slot goes where its record would be looked for.
void move_slot(const map_slot *slot) {
    if (slot->record != 0) *find_slot(slot->tag, record_of(slot)) = *slot;
}

void resize_index(uint32_t slot_count) {
    map_slot *old = maps.slots;
    uint32_t old_count = maps.slot_count;
    size_t size = slot_count * sizeof *old;
    maps.slots = static_cast<map_slot *>(chkalloc(size));
    memset(maps.slots, 0, size);
    maps.slot_count = slot_count;
    for (uint32_t i = 0; i < old_count; ++i)
        move_slot(&old[i]);
    free(old);
}

void make_room_in_index() {
    uint32_t needed = 2 * (static_cast<uint32_t>(maps.records.count) + 1);
    if (maps.slot_count == 0)
        resize_index(first_slots);
    else if (needed > maps.slot_count)
        resize_index(2 * maps.slot_count);
}

}  // namespace

maprec *tovan::mapping_records() {
    if (maps.records.capacity == 0)
        dydnew(&maps.records, first_capacity, sizeof(maprec));
    return static_cast<maprec *>(maps.records.data);
}

void add_map(int type, char *from, int fromlen, char *to) {
    maprec added = {type, from, fromlen, to};
    tovan::mapping_records();
    make_room_in_index();
    uint32_t tag = tag_of(&added);
    map_slot *slot = find_slot(tag, &added);
    if (slot->record == 0) {
        dydadd(&maps.records, &added);
        *slot = {tag, maps.records.count};
        return;
    }
    maprec *record = record_of(slot);
    free(from);
    free(record->to);
    record->to = to;
}

TOVAN_IDENT(add_map, "8.4", "26/11/21")
