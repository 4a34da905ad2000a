// lvvmatch.cc: variables by name and subscript.
//
// What counts is what a scan of the whole heap would find: an exact subscript
// at once, else the longest pattern, the first one met among equally long
// ones, else the plain variable. A pattern beats the plain variable wherever
// the two lie, so the plain one can be looked up last and the scan can keep
// to the names that have a subscript.
#include "lvget.h"

#include "dystr.h"
#include "fmatch.h"
#include "ident.h"
#include "private_lvget.h"

#include <string.h>

using tovan::heap_entry;
using tovan::variable_heap;

namespace {

struct subscript_search {
    const char *name;
    size_t name_length;
    const char *wanted;  // the key and its "]"
    bool use_plain;
    const char *held;  // the best value so far
    size_t longest;    // pattern that gave it, from its "[" on
    bool settled;      // an exact subscript was met
};

void weigh_subscript(subscript_search *search, const heap_entry *entry,
                     const char *subscript) {
    if (strcmp(subscript + 1, search->wanted) == 0) {
        search->held = tovan::entry_value(entry);
        search->settled = true;
        return;
    }
    if (fmatch(search->wanted, subscript + 1) == 0) return;
    size_t length = strlen(subscript);
    if (length <= search->longest) return;
    search->held = tovan::entry_value(entry);
    search->longest = length;
}

void weigh(subscript_search *search, const heap_entry *entry) {
    const char *name = tovan::entry_name(entry);
    if (search->settled) return;
    if (strncmp(name, search->name, search->name_length) != 0) return;
    const char *rest = name + search->name_length;
    if (*rest == '[') {
        weigh_subscript(search, entry, rest);
    } else if (*rest == '\0' && search->use_plain && search->held == nullptr) {
        search->held = tovan::entry_value(entry);
    }
}

void weigh_all(subscript_search *search, const variable_heap *heap) {
    tovan::for_each_entry(
        heap, [search](int, const heap_entry *entry) { weigh(search, entry); });
}

void weigh_indexed(subscript_search *search, const variable_heap *heap) {
    size_t base_length = strcspn(search->name, "[");
    uint32_t next = tovan::first_subscript(heap, search->name, base_length);
    while (next != 0 && !search->settled) {
        const tovan::heap_subscript *subscript = &heap->subscripts[next];
        weigh(search, tovan::entry_at(heap, subscript->position));
        next = subscript->next;
    }
    if (!search->use_plain || search->held != nullptr) return;
    const heap_entry *plain = tovan::find_entry(heap, search->name);
    if (plain != nullptr) search->held = tovan::entry_value(plain);
}

// The key and its "]". Filled by each lvvarmatch() for its own use; kept for
// the next one; never released.
constinit dy wanted{};

}  // namespace

const char *lvvarmatch(int use_plain, const char *name, const char *key) {
    const variable_heap *heap = tovan::loaded_variables("lvvarmatch");
    dyreuse(&wanted, 64);
    dystr(&wanted, key);
    dyaddc(&wanted, ']');
    subscript_search search{};
    search.name = name;
    search.name_length = strlen(name);
    search.wanted = wanted.buffer;
    search.use_plain = use_plain != 0;
    if (heap->misplaced) {
        weigh_all(&search, heap);
    } else {
        weigh_indexed(&search, heap);
    }
    return search.held;
}

TOVAN_IDENT(lvvmatch, "8.4", "26/11/21")
