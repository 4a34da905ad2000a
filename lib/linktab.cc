// linktab.cc: files that have several names.
#include "private_linktab.h"

#include "chkalloc.h"
#include "ident.h"

#include <stdlib.h>

using tovan::hash_slot;
using tovan::link_table;
using tovan::linked_file;

namespace {

constexpr uint32_t first_room = 64;

uint32_t tag_of(dev_t device, ino_t inode) {
    using namespace tovan::hashing;
    return static_cast<uint32_t>(folded(inode ^ odd_1, device + odd_2));
}

// Where the file stands in the index, or where it would go. A slot holds the
// place in `files` and 1.
hash_slot *slot_of(const link_table *table, dev_t device, ino_t inode) {
    auto is_wanted = [=](const hash_slot *slot) {
        const linked_file *file = table->files + slot->at - 1;
        return file->inode == inode && file->device == device;
    };
    return tovan::search(&table->index, tag_of(device, inode), is_wanted);
}

void enter(link_table *table, uint32_t place) {
    const linked_file *file = table->files + place;
    hash_slot *slot = slot_of(table, file->device, file->inode);
    *slot = {tag_of(file->device, file->inode), place + 1};
}

void grow(link_table *table) {
    table->room = table->room == 0 ? first_room : table->room * 2;
    size_t size = table->room * sizeof(linked_file);
    table->files = static_cast<linked_file *>(chkrealloc(table->files, size));
    free(table->index.slots);
    table->index = tovan::new_hash_table(table->room);
    for (uint32_t place = 0; place < table->count; place++)
        enter(table, place);
}

}  // namespace

linked_file *tovan::find_linked(const link_table *table, dev_t device,
                                ino_t inode) {
    if (table->count == 0) return nullptr;
    const hash_slot *slot = slot_of(table, device, inode);
    return slot->at != 0 ? table->files + slot->at - 1 : nullptr;
}

linked_file *tovan::add_linked(link_table *table, dev_t device, ino_t inode) {
    if (table->count == table->room) grow(table);
    linked_file *file = table->files + table->count;
    *file = {device, inode, {nullptr}};
    enter(table, table->count);
    table->count++;
    return file;
}

void tovan::clear_links(link_table *table) {
    free(table->files);
    free(table->index.slots);
    *table = {};
}

TOVAN_IDENT(linktab, "8.4", "26/11/22")
