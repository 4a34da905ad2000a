// sfterm.cc: the dictionary's terms, found by their names.
//
// Terms lie side by side in one array; a table leads from the hash of a name
// to its place there. Both double when they are full, so that a definition
// and a look-up cost the same among ten names and among a million.
#include "private_sfterm.h"

#include "chkalloc.h"
#include "errexit.h"
#include "ident.h"
#include "private_hash.h"

#include <limits.h>
#include <stdlib.h>
#include <string.h>

using tovan::hash_slot;
using tovan::hash_table;
using tovan::sf_term;

namespace {

constexpr size_t first_capacity = 64;

// The dictionary. Filled by add_term(), lives until the process ends. A slot
// of the table holds a term's place in the array plus one.
struct dictionary {
    sf_term *terms;
    size_t count;
    size_t capacity;
    hash_table places;
};
constinit dictionary dict{};

// The slot of a term's place.
hash_slot *slot_of(uint32_t tag, size_t place) {
    auto is_own = [place](const hash_slot *slot) {
        return slot->at == place + 1;
    };
    return search(&dict.places, tag, is_own);
}

// Fills the first free slot of a tag.
void fill_slot(hash_slot filled) {
    auto is_taken = [](const hash_slot *) { return false; };
    *search(&dict.places, filled.tag, is_taken) = filled;
}

// The slots of the old table come in the order of their tags, and so they go
// to the new one: both are walked from end to end, and no term is looked at.
void grow() {
    dict.capacity = dict.capacity == 0 ? first_capacity : dict.capacity * 2;
    dict.terms = static_cast<sf_term *>(
        chkrealloc(dict.terms, dict.capacity * sizeof(sf_term)));
    hash_table old = dict.places;
    dict.places = tovan::new_hash_table(dict.capacity);
    for (size_t i = 0; old.slots != nullptr && i <= old.mask; ++i) {
        if (old.slots[i].at != 0) fill_slot(old.slots[i]);
    }
    free(old.slots);
}

// Frees a slot: those behind it that searches would no longer reach move up.
void free_slot(hash_slot *slot) {
    const hash_table *table = &dict.places;
    auto hole = static_cast<uint32_t>(slot - table->slots);
    uint32_t next = hole;
    while (true) {
        next = (next + 1) & table->mask;
        if (table->slots[next].at == 0) break;
        uint32_t home = table->slots[next].tag >> table->shift;
        bool is_reached =
            ((next - home) & table->mask) < ((next - hole) & table->mask);
        if (is_reached) continue;
        table->slots[hole] = table->slots[next];
        hole = next;
    }
    table->slots[hole] = {};
}

}  // namespace

tovan::sf_terms tovan::all_terms() {
    return {dict.terms, dict.count};
}

void tovan::expect_term(const char *name, size_t length) {
    if (dict.count == 0) return;
    uint32_t place = text_tag(name, length) >> dict.places.shift;
    __builtin_prefetch(&dict.places.slots[place]);
}

sf_term *tovan::find_term(const char *name, size_t length) {
    if (dict.count == 0) return nullptr;
    auto is_equal = [name, length](const hash_slot *slot) {
        const sf_term *term = &dict.terms[slot->at - 1];
        return term->name_length == length &&
               same_text(name_of(term), name, length);
    };
    const hash_slot *slot =
        search(&dict.places, text_tag(name, length), is_equal);
    return slot->at != 0 ? &dict.terms[slot->at - 1] : nullptr;
}

void tovan::add_term(const char *name, size_t length, const dy *value,
                     const char *where, int line) {
    if (length > INT_MAX) nocore();
    if (dict.count == dict.capacity) grow();
    sf_term *term = &dict.terms[dict.count];
    term->name_length = static_cast<uint32_t>(length);
    if (has_short_name(term))
        memcpy(term->short_name, name, length + 1);
    else
        term->long_name = savenstr(name, length);
    term->tag = text_tag(name, length);
    term->where = where;
    term->line = line;
    dynew(&term->value, value->length + 1);
    dynstr(&term->value, value->buffer, value->length);
    fill_slot({term->tag, static_cast<uint32_t>(++dict.count)});
}

void tovan::remove_term(sf_term *term) {
    auto place = static_cast<size_t>(term - dict.terms);
    free_slot(slot_of(term->tag, place));
    if (!has_short_name(term)) free(term->long_name);
    free(term->value.buffer);
    size_t last = --dict.count;
    if (place == last) return;
    slot_of(dict.terms[last].tag, last)->at = static_cast<uint32_t>(place + 1);
    dict.terms[place] = dict.terms[last];
}

TOVAN_IDENT(sfterm, "8.4", "26/11/21")
