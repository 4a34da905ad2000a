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
//     a chain: "CC"@7, "LD"@12, "CC"@19
//     slots:  ... {tag of "CC", 7} {tag of "LD", 12} - ...
//
// `bases` leads from the text before the first "[" to a list of all entries
// that share it, in the order in which a scan of the heap meets them:
//
//     "X[a*]"@3, "X[b]"@9, "Y[a]"@15
//     slots:       ... {tag of "X", 1} - {tag of "Y", 3} ...
//     subscripts:  1: {3, next 2}, 2: {9, end}, 3: {15, end}
#include "lvheap.h"

#include "chkalloc.h"
#include "ident.h"
#include "private_hash.h"
#include "private_lvindex.h"

#include <stdlib.h>
#include <string.h>

using tovan::entry_at;
using tovan::entry_name;
using tovan::variable_heap;

namespace {

// Whether the entry has this name; it may be shorter and end with the heap.
bool has_name(const variable_heap *heap, uint32_t position, const char *name,
              size_t length) {
    size_t name_at = size_t{position} * 8 + 7;
    if (heap->size - name_at <= length) return false;
    const char *own = entry_name(entry_at(heap, position));
    return own[length] == '\0' && tovan::same_text(own, name, length);
}

// Whether the entry's name has this text before its first "[".
bool has_base(const variable_heap *heap, uint32_t position, const char *base,
              size_t length) {
    size_t name_at = size_t{position} * 8 + 7;
    if (heap->size - name_at <= length) return false;
    const char *own = entry_name(entry_at(heap, position));
    return own[length] == '[' && tovan::same_text(own, base, length);
}

tovan::hashed_text hashed(const char *bytes, size_t length) {
    return {bytes, length, tovan::text_tag(bytes, length)};
}

// Puts positions where a scan of the chains from 0 to 255 would meet them.
void order_by_chain(tovan::heap_subscript *ordered,
                    const tovan::found_subscript *found, size_t count) {
    size_t places[tovan::heap_buckets + 1] = {};
    for (size_t i = 0; i < count; ++i)
        ++places[found[i].bucket + 1];
    for (int bucket = 0; bucket < tovan::heap_buckets; ++bucket)
        places[bucket + 1] += places[bucket];
    for (size_t i = 0; i < count; ++i)
        ordered[places[found[i].bucket]++].position = found[i].position;
}

}  // namespace

void tovan::index_names(variable_heap *heap, const found_name *names,
                        size_t count) {
    hash_table table = new_hash_table(count);
    for (const found_name *found = names; found < names + count; ++found) {
        const char *name = entry_name(entry_at(heap, found->position));
        auto is_equal = [heap, name](const hash_slot *slot) {
            return strcmp(entry_name(entry_at(heap, slot->at)), name) == 0;
        };
        auto text = [name, found] {
            return hashed_text{name, strlen(name), found->tag};
        };
        hash_slot *slot = slot_for(&table, found->tag, is_equal, text);
        if (slot->at == 0) *slot = {found->tag, found->position};
    }
    heap->names = table;
}

void tovan::index_subscripts(variable_heap *heap, const found_subscript *found,
                             size_t count) {
    heap->bases = new_hash_table(count);
    heap->subscripts = static_cast<heap_subscript *>(
        chkalloc((count + 1) * sizeof(heap_subscript)));
    order_by_chain(heap->subscripts + 1, found, count);
    // From the last to the first, each put before the others of its list: so
    // the lists come out in order.
    for (size_t i = count; i > 0; --i) {
        heap_subscript *subscript = &heap->subscripts[i];
        const char *name = entry_name(entry_at(heap, subscript->position));
        auto length = static_cast<size_t>(strchr(name, '[') - name);
        hashed_text base = hashed(name, length);
        auto is_equal = [heap, &base](const hash_slot *slot) {
            uint32_t position = heap->subscripts[slot->at].position;
            return has_base(heap, position, base.bytes, base.length);
        };
        hash_slot *slot = slot_for(&heap->bases, base.tag, is_equal,
                                   [&base] { return base; });
        subscript->next = slot->at;
        *slot = {base.tag, static_cast<uint32_t>(i)};
    }
}

const tovan::heap_entry *tovan::find_entry(const variable_heap *heap,
                                           const char *name,
                                           size_t length) {
    auto is_equal = [=](const hash_slot *slot) {
        return has_name(heap, slot->at, name, length);
    };
    hashed_text text = hashed(name, length);
    uint32_t at =
        find_at(&heap->names, text.tag, is_equal, [&text] { return text; });
    return at != 0 ? entry_at(heap, at) : nullptr;
}

uint32_t tovan::first_subscript(const variable_heap *heap, const char *base,
                                size_t length) {
    hashed_text text = hashed(base, length);
    auto is_equal = [=](const hash_slot *slot) {
        uint32_t position = heap->subscripts[slot->at].position;
        return has_base(heap, position, base, length);
    };
    return find_at(&heap->bases, text.tag, is_equal, [&text] { return text; });
}

TOVAN_IDENT(lvindex, "8.4", "26/11/21")
