// add_map.cc: the records of the root maps and the index that finds equal
// ones.
#include "map_root.h"

#include "dypadd.h"
#include "ident.h"
#include "private_hash.h"
#include "private_map_root.h"

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

using tovan::hash_slot;
using tovan::hash_table;

namespace {

constexpr int first_capacity = 32;

// Records in the order of their first appearance. Filled by add_map(); holds
// for the process; a record's texts are released when they are replaced. A
// slot of the index holds a record's place among them plus one.
struct map_state {
    dyd records;
    hash_table index;
    int room;  // records that the index is made for
};
constinit map_state maps{};

maprec *record_at(int place) {
    return static_cast<maprec *>(maps.records.data) + place;
}

maprec *record_of(const hash_slot *slot) {
    return record_at(static_cast<int>(slot->at - 1));
}

bool is_equal(const maprec *record, const maprec *other) {
    return record->type == other->type && record->fromlen == other->fromlen &&
           memcmp(record->from, other->from,
                  static_cast<size_t>(record->fromlen)) == 0;
}

// Of equal from-paths those of different types have different tags.
tovan::hashed_text text_of(const maprec *record) {
    size_t length = static_cast<size_t>(record->fromlen);
    uint32_t tag = tovan::text_tag(record->from, length) +
                   static_cast<uint32_t>(record->type);
    return {record->from, length, tag};
}

// The slot of an equal record, or an empty one for it.
hash_slot *slot_of_record(const maprec *wanted,
                          const tovan::hashed_text &text) {
    auto is_wanted = [wanted](const hash_slot *slot) {
        return is_equal(record_of(slot), wanted);
    };
    return tovan::slot_for(&maps.index, text.tag, is_wanted,
                           [&text] { return text; });
}

void enter_record(int place) {
    const maprec *record = record_at(place);
    tovan::hashed_text text = text_of(record);
    *slot_of_record(record, text) = {text.tag,
                                     static_cast<uint32_t>(place + 1)};
}

void make_room_in_index() {
    if (maps.records.count < maps.room) return;
    maps.room = maps.room > 0 ? 2 * maps.room : first_capacity;
    free_hash_table(&maps.index);
    maps.index = tovan::new_hash_table(static_cast<size_t>(maps.room));
    for (int place = 0; place < maps.records.count; ++place)
        enter_record(place);
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
    tovan::hashed_text text = text_of(&added);
    hash_slot *slot = slot_of_record(&added, text);
    if (slot->at == 0) {
        dydadd(&maps.records, &added);
        *slot = {text.tag, static_cast<uint32_t>(maps.records.count)};
        return;
    }
    maprec *record = record_of(slot);
    free(from);
    free(record->to);
    record->to = to;
}

TOVAN_IDENT(add_map, "8.4", "26/11/21")
