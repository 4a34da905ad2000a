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

tovan::hashed_text text_of(const sf_term &term) {
    return {name_of(&term), term.name_length, term.tag};
}

// Fills the first free slot of a tag, for a term that has none.
void fill_slot(hash_slot filled) {
    auto is_taken = [](const hash_slot *) { return false; };
    auto text = [filled] { return text_of(dict.terms[filled.at - 1]); };
    *slot_for(&dict.places, filled.tag, is_taken, text) = filled;
}

// The slot of a term, or an empty one. An empty place may have been taken when
// a term went to the tree.
hash_slot *slot_of_term(size_t place) {
    const sf_term &term = dict.terms[place];
    auto is_own = [place](const hash_slot *slot) {
        return slot->at == place + 1;
    };
    hash_slot *slot = slot_for(&dict.places, term.tag, is_own,
                               [&term] { return text_of(term); });
    if (slot->at != 0 || dict.places.others == nullptr) return slot;
    hash_slot *other = find_other(&dict.places, text_of(term));
    return other != nullptr ? other : slot;
}

// The slots of the old table come in the order of their tags, and so they go
// to the new one: both are walked from end to end, and no term is looked at
// but those of the tree.
void grow() {
    dict.capacity = dict.capacity == 0 ? first_capacity : dict.capacity * 2;
    dict.terms = static_cast<sf_term *>(
        chkrealloc(dict.terms, dict.capacity * sizeof(sf_term)));
    hash_table old = dict.places;
    dict.places = tovan::new_hash_table(dict.capacity);
    for (size_t i = 0, n = count_places(&old); i < n; ++i) {
        if (old.slots[i].at != 0) fill_slot(old.slots[i]);
    }
    for (size_t i = 0; old.others != nullptr && i < dict.count; ++i) {
        hash_slot *slot = slot_of_term(i);
        if (slot->at == 0)
            *slot = {dict.terms[i].tag, static_cast<uint32_t>(i + 1)};
    }
    free_hash_table(&old);
}

// Frees a slot of the table: those behind it that searches would no longer
// reach move up.
void free_slot(hash_slot *hole) {
    const hash_slot *slots = dict.places.slots;
    for (hash_slot *next = hole + 1; next->at != 0; ++next) {
        if (slots + (next->tag >> dict.places.shift) > hole) continue;
        *hole = *next;
        hole = next;
    }
    *hole = {};
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
    hashed_text text = {name, length, text_tag(name, length)};
    uint32_t at =
        find_at(&dict.places, text.tag, is_equal, [&text] { return text; });
    if (at == 0 && dict.places.others != nullptr) {
        const hash_slot *other = find_other(&dict.places, text);
        if (other != nullptr) at = other->at;
    }
    return at != 0 ? &dict.terms[at - 1] : nullptr;
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
    hash_slot *slot = slot_of_term(place);
    if (is_other(&dict.places, slot)) {
        remove_other(&dict.places, text_of(*term));
    } else {
        free_slot(slot);
    }
    if (!has_short_name(term)) free(term->long_name);
    free(term->value.buffer);
    size_t last = --dict.count;
    if (place == last) return;
    slot_of_term(last)->at = static_cast<uint32_t>(place + 1);
    dict.terms[place] = dict.terms[last];
}

TOVAN_IDENT(sfterm, "8.4", "26/11/21")
