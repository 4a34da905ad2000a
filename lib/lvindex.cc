// lvindex.cc: names to entries of a heap in one or two steps.
//
// The chains of the format are long: 100,000 variables hang in 256 of them.
// Each heap therefore gets two tables of its own beside them.
//
// `names` has a slot for each name: 32 bits of its hash and its position. The
// leading bits of the hash are the first place to look, the next free place
// ends the search. Of equal names only the first one of the chain is stored,
// which is the one that a walk of the chain would find:
//
//     chain of "CC" (h = 0x5a): "CC"@7, "LD"@12, "CC"@19
//     slots:  ... {tag of "CC", 7} {tag of "LD", 12} - ...
//
// `bases` leads from the text before the first "[" to a list of all entries
// that share it, in the order in which a scan of the heap meets them:
//
//     "X[a*]"@3, "X[b]"@9, "Y[a]"@15
//     slots:       ... {tag of "X", 1} - {tag of "Y", 3} ...
//     subscripts:  1: {3, next 2}, 2: {9, end}, 3: {15, end}
//
// Its lists are told apart by their tags alone: texts whose tags are equal
// share a list, and whoever walks it compares the text anyway.
//
// Not handled: names made up to have equal tags. They share one run of places
// and cost what they would cost in one chain.
#include "lvheap.h"

#include "chkalloc.h"
#include "errexit.h"
#include "ident.h"
#include "private_hash.h"
#include "private_lvindex.h"

#include <stdlib.h>
#include <string.h>
#include <bit>

using tovan::entry_at;
using tovan::entry_name;
using tovan::heap_slot;
using tovan::heap_table;
using tovan::variable_heap;

namespace {

// At most half of the places are taken.
heap_table new_table(size_t count) {
    int bits = static_cast<int>(std::bit_width(count)) + 1;
    size_t places = size_t{1} << bits;
    auto *slots = static_cast<heap_slot *>(calloc(places, sizeof(heap_slot)));
    if (slots == nullptr) nocore();
    return {slots, 32 - bits, static_cast<uint32_t>(places - 1)};
}

// The place of the first slot at which is_wanted(slot) holds, or of the free
// slot that ends the search.
template <typename Wanted>
heap_slot *search(const heap_table *table, uint32_t tag, Wanted is_wanted) {
    uint32_t place = tag >> table->shift;
    while (true) {
        heap_slot *slot = table->slots + place;
        if (slot->at == 0) return slot;
        if (slot->tag == tag && is_wanted(slot)) return slot;
        place = (place + 1) & table->mask;
    }
}

bool any_slot(const heap_slot *) {
    return true;
}

uint32_t base_tag(const variable_heap *heap, uint32_t position) {
    const char *name = entry_name(entry_at(heap, position));
    return tovan::text_tag(name, strcspn(name, "["));
}

}  // namespace

void tovan::index_names(variable_heap *heap, const found_name *names,
                        size_t count) {
    heap_table table = new_table(count);
    for (const found_name *found = names; found < names + count; ++found) {
        const char *name = entry_name(entry_at(heap, found->position));
        auto is_equal = [heap, name](const heap_slot *slot) {
            return strcmp(entry_name(entry_at(heap, slot->at)), name) == 0;
        };
        heap_slot *slot = search(&table, found->tag, is_equal);
        if (slot->at == 0) *slot = {found->tag, found->position};
    }
    heap->names = table;
}

// From the last to the first, each put before the others of its list: so the
// lists come out in order.
void tovan::index_subscripts(variable_heap *heap, const uint32_t *positions,
                             size_t count) {
    heap->bases = new_table(count);
    heap->subscripts = static_cast<heap_subscript *>(
        chkalloc((count + 1) * sizeof(heap_subscript)));
    for (size_t i = count; i > 0; --i) {
        uint32_t tag = base_tag(heap, positions[i - 1]);
        heap_slot *slot = search(&heap->bases, tag, any_slot);
        heap->subscripts[i] = {positions[i - 1], slot->at};
        *slot = {tag, static_cast<uint32_t>(i)};
    }
}

const tovan::heap_entry *tovan::find_entry(const variable_heap *heap,
                                           const char *name) {
    uint32_t tag = text_tag(name, strlen(name));
    auto is_equal = [heap, name](const heap_slot *slot) {
        return strcmp(entry_name(entry_at(heap, slot->at)), name) == 0;
    };
    const heap_slot *slot = search(&heap->names, tag, is_equal);
    return slot->at != 0 ? entry_at(heap, slot->at) : nullptr;
}

uint32_t tovan::first_subscript(const variable_heap *heap, const char *base,
                                size_t length) {
    return search(&heap->bases, text_tag(base, length), any_slot)->at;
}

TOVAN_IDENT(lvindex, "8.4", "26/11/21")
