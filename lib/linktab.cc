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

// The two numbers of a file, as a text that is looked for.
struct file_key {
    uint64_t numbers[2];
    uint32_t tag;

    file_key(dev_t device, ino_t inode)
        : numbers{device, inode},
          tag(static_cast<uint32_t>(tovan::hashing::folded(
              inode ^ tovan::hashing::odd_1, device + tovan::hashing::odd_2))) {
    }
    tovan::hashed_text text() const {
        return {reinterpret_cast<const char *>(numbers), sizeof numbers, tag};
    }
};

// A slot of the index holds the place in `files` and 1.
void enter(link_table *table, uint32_t place) {
    const linked_file *file = table->files + place;
    file_key key(file->device, file->inode);
    auto is_taken = [](const hash_slot *) { return false; };
    *slot_for(&table->index, key.tag, is_taken,
              [&key] { return key.text(); }) = {key.tag, place + 1};
}

void grow(link_table *table) {
    table->room = table->room == 0 ? first_room : table->room * 2;
    size_t size = table->room * sizeof(linked_file);
    table->files = static_cast<linked_file *>(chkrealloc(table->files, size));
    free_hash_table(&table->index);
    table->index = tovan::new_hash_table(table->room);
    for (uint32_t place = 0; place < table->count; place++)
        enter(table, place);
}

}  // namespace

linked_file *tovan::find_linked(const link_table *table, dev_t device,
                                ino_t inode) {
    if (table->count == 0) return nullptr;
    auto is_wanted = [=](const hash_slot *slot) {
        const linked_file *file = table->files + slot->at - 1;
        return file->inode == inode && file->device == device;
    };
    file_key key(device, inode);
    uint32_t at = find_at(&table->index, key.tag, is_wanted,
                          [&key] { return key.text(); });
    return at != 0 ? table->files + at - 1 : nullptr;
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
    free_hash_table(&table->index);
    *table = {};
}

TOVAN_IDENT(linktab, "8.4", "26/11/22")
