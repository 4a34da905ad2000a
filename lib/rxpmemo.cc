// rxpmemo.cc: what visits of branch states leave behind.
//
// Without a memory `<a|a>*b` takes 2^n ways through n letters "a". Most of
// them enter the same branch at the same position again, and what happens
// from there is known: no new end can be found (all ends are recorded the
// first time), so that an equal visit only writes registers. It is repeated
// by writing them at once. With that, each visit is made once, and the steps
// of a whole evaluation are linear in the subject.
//
// Equal visits have the same branch, the same position, and the same set of
// open branches among those that can be met from here without consuming. The
// set cannot be left out: in `<a*<>|a*>+\{` on "ab" a branch that is met again
// fails or ends the match by who opened it before. It is empty for all
// programs but those with loops that can go around without consuming.
//
//     slot of (branch, position)   0        no visit is known
//                                  1        one, set empty, nothing written
//                                  n        record n
//     record                       next     the slot's content before
//                                  what     set and registers written
//                                  values   one a register, lowest first
//
// Visits that end alike share a record: in `\(a*\)b` all visits of the loop
// leave what the innermost one wrote. A memory that is full forgets new
// visits, which costs time and changes nothing.
#include "rxpcomp.h"

#include "ident.h"
#include "private_rxp.h"
#include "private_rxpmemo.h"
#include "private_rxprun.h"
#include "private_rxpshape.h"

#include <stdlib.h>
#include <string.h>
#include <bit>

using tovan::rxp_machine;
using tovan::rxp_memory;
using tovan::rxp_set;

namespace {

constexpr uint32_t unknown = 0;
constexpr uint32_t nothing_written = 1;
constexpr uint32_t first_record = 2;

constexpr unsigned mask_bits = 18;  // registers of nine sub-matches
constexpr uint32_t all_registers = (1u << mask_bits) - 1;
constexpr uint32_t record_head = 2;  // words before the values

// Blocks up to this size are kept for the next evaluation.
constexpr size_t kept_bytes = size_t{1} << 16;

// Distinct sets of open branches, an open-addressing table. Its places are
// the numbers of the sets, 0 is the empty one. Emptied when a memory is
// switched on.
constexpr unsigned set_places = 512;
constexpr unsigned max_sets = set_places / 2;
struct set_table {
    unsigned count;
    rxp_set places[set_places];
};
constinit set_table sets = {};

// The one memory, from rxp_remember() to rxp_forget(). Small blocks stay for
// the next time.
constinit rxp_memory the_memory = {};

bool is_same(const rxp_set &a, const rxp_set &b) {
    return memcmp(&a, &b, sizeof a) == 0;
}

unsigned first_place(const rxp_set &set) {
    uint64_t sum = 0;
    for (uint64_t word : set.words)
        sum = (sum ^ word) * 0x9e3779b97f4a7c15;
    return static_cast<unsigned>(sum >> 55);
}

// The number of a set; set_places when there are too many.
unsigned set_number(const rxp_set &set) {
    if (rxp_is_empty(set)) return 0;
    unsigned place = first_place(set);
    for (;; place = (place + 1) % set_places) {
        if (place == 0) continue;
        if (is_same(sets.places[place], set)) return place;
        if (rxp_is_empty(sets.places[place])) break;
    }
    if (sets.count == max_sets) return set_places;
    sets.count++;
    sets.places[place] = set;
    return place;
}

// The empty loops that are open here and can be met from the branch.
unsigned open_set(const rxp_machine *m, int branch, const char *position) {
    if (!m->shape->has_empty_loops) return 0;
    const rxp_set &meets = m->shape->meets[m->shape->ordinal[branch]];
    rxp_set open = {};
    rxp_for_each(meets, [&](unsigned state) {
        if (m->guard[state] == position) rxp_add(&open, state);
    });
    return set_number(open);
}

// ---- records ------------------------------------------------------------

uint32_t record_what(unsigned set, unsigned written) {
    return static_cast<uint32_t>(set << mask_bits | written);
}

// Positions are kept as offsets, one higher; 0 is "none".
uint32_t packed(const rxp_machine *m, const char *position) {
    if (position == nullptr) return 0;
    return static_cast<uint32_t>(position - m->subject) + 1;
}

const char *unpacked(const rxp_machine *m, uint32_t value) {
    return value == 0 ? nullptr : m->subject + (value - 1);
}

template <typename Visit>
void for_each_register(uint32_t written, Visit visit) {
    for (; written != 0; written &= written - 1)
        visit(2 + std::countr_zero(written));
}

// Only a start of a sub-match raises it.
void raise_highest(tovan::rxp_findings *found, int number) {
    if (number % 2 == 0 && number / 2 > found->highest)
        found->highest = number / 2;
}

void repeat(rxp_machine *m, const uint32_t *record) {
    uint32_t written = record[1] & all_registers;
    const uint32_t *value = record + record_head;
    for_each_register(written, [&](int number) {
        m->found.registers[number] = unpacked(m, *value++);
        raise_highest(&m->found, number);
    });
    m->written |= written;
}

// Grows the records as far as the limit lets them.
bool has_room(rxp_memory *memory, size_t words) {
    size_t needed = memory->n_records + words;
    if (needed <= memory->records_room) return true;
    if (needed > memory->records_limit) return false;
    size_t room = needed + needed / 4 + 64;
    if (room > memory->records_limit) room = memory->records_limit;
    void *block = realloc(memory->records, room * sizeof(uint32_t));
    if (block == nullptr) return false;
    memory->records = static_cast<uint32_t *>(block);
    memory->records_room = room;
    return true;
}

// Writes a record behind the last one without taking its room yet.
//   result    its length in words; 0: the memory is full
size_t draft_record(rxp_machine *m, uint32_t next, uint32_t what) {
    rxp_memory *memory = m->memory;
    if (!has_room(memory, record_head + mask_bits)) return 0;
    uint32_t *record = memory->records + memory->n_records;
    record[0] = next;
    record[1] = what;
    uint32_t *value = record + record_head;
    for_each_register(m->written, [&](int number) {
        *value++ = packed(m, m->found.registers[number]);
    });
    return static_cast<size_t>(value - record);
}

bool equals_last_record(const rxp_memory *memory, size_t length) {
    if (memory->last_record == unknown) return false;
    return memcmp(memory->records + memory->last_record,
                  memory->records + memory->n_records,
                  length * sizeof(uint32_t)) == 0;
}

// ---- switching on and off -----------------------------------------------

bool make_slots(rxp_memory *memory, size_t count) {
    if (count == 0) return true;  // only stretches are remembered
    if (count <= memory->slots_room) {
        memset(memory->slots, 0, count * sizeof(uint32_t));
        return true;
    }
    free(memory->slots);
    memory->slots = static_cast<uint32_t *>(calloc(count, sizeof(uint32_t)));
    memory->slots_room = memory->slots != nullptr ? count : 0;
    return memory->slots != nullptr;
}

// Chosen: room for a record of all registers at nearly every slot. Patterns
// that write all of them at every visit are rare, but they must not be slow.
size_t words_for(size_t slots, const tovan::rxp_shape &shape) {
    constexpr size_t small_limit = 1024;  // where the subject is short
    return slots * (1 + 3 * static_cast<size_t>(shape.n_submatches)) +
           small_limit;
}

void clear(rxp_memory *memory, size_t records_limit) {
    memory->n_records = first_record;
    memory->records_limit = records_limit;
    memory->last_record = unknown;
    for (tovan::rxp_stretch &stretch : memory->stretches)
        stretch = {SIZE_MAX, 0};
    if (sets.count > 0) sets = {};
}

// Releases a block unless it is small enough to keep.
void drop_block(uint32_t **block, size_t *room) {
    if (*room * sizeof(uint32_t) <= kept_bytes) return;
    free(*block);
    *block = nullptr;
    *room = 0;
}

}  // namespace

void tovan::rxp_remember(rxp_machine *m) {
    rxp_know_shape(m);
    size_t positions = strlen(m->subject) + 1;
    if (m->shape->has_references || positions >= UINT32_MAX) return;
    size_t slots = positions * static_cast<size_t>(m->shape->n_branches);
    if (!make_slots(&the_memory, slots)) return;
    clear(&the_memory, words_for(slots, *m->shape));
    for (int i = 1; i < m->states[0].next; i++) {
        if (m->states[i].opcode == rxp_branch)
            the_memory.rows[i] =
                the_memory.slots + m->shape->ordinal[i] * positions;
    }
    m->memory = &the_memory;
    m->remembered_from = m->n_frames;
}

bool tovan::rxp_recall(rxp_machine *m, int branch, const char *position) {
    uint32_t slot = *rxp_slot(m, branch, position);
    if (slot == unknown) return false;
    unsigned set = open_set(m, branch, position);
    while (slot >= first_record) {
        const uint32_t *record = m->memory->records + slot;
        if (record[1] >> mask_bits == set) {
            repeat(m, record);
            return true;
        }
        slot = record[0];
    }
    return slot == nothing_written && set == 0;
}

void tovan::rxp_note(rxp_machine *m, int branch, const char *position) {
    uint32_t *slot = rxp_slot(m, branch, position);
    unsigned set = open_set(m, branch, position);
    if (set == set_places) return;
    if (set == 0 && m->written == 0 && *slot == unknown) {
        *slot = nothing_written;
        return;
    }
    rxp_memory *memory = m->memory;
    size_t length = draft_record(m, *slot, record_what(set, m->written));
    if (length == 0) return;
    if (!equals_last_record(memory, length)) {
        memory->last_record = static_cast<uint32_t>(memory->n_records);
        memory->n_records += length;
    }
    *slot = memory->last_record;
}

size_t tovan::rxp_forget(rxp_memory *memory) {
    size_t words = memory->slots_room + memory->records_room;
    drop_block(&memory->slots, &memory->slots_room);
    drop_block(&memory->records, &memory->records_room);
    return words * sizeof(uint32_t);
}

TOVAN_IDENT(rxpmemo, "8.4", "26/11/21")
