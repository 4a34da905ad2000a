// u_arlist.cc: the members of archives.
#include "u_arlist.h"

#include "chkalloc.h"
#include "convert.h"
#include "dypadd.h"
#include "dystr.h"
#include "errexit.h"
#include "ident.h"
#include "private_arlist.h"
#include "private_io.h"
#include "strutil.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace {

constexpr const char *ignored_names[] = {"", "/", "__________EBEB_"};
constexpr const char *long_table = ignored_names[1];

constexpr int pool_size = 32;

// Records to hand out. Filled by new_member(); never released.
struct member_pool {
    armember *next;
    int left;
};
constinit member_pool pool{};

// A member whose name is in the long-name table.
struct long_named {
    armember *member;
    char reference[tovan::ar_name_width + 1];  // "/" and an offset
};

struct member_list {
    armember *head;
    armember **tail;
    dyd long_names;  // of long_named
    int32_t table;   // where the long-name table is, -1: none was seen
    int32_t table_size;
};

armember *new_member() {
    if (pool.left == 0) {
        void *block = chkalloc(pool_size * sizeof(armember));
        pool = {static_cast<armember *>(block), pool_size};
    }
    pool.left--;
    return pool.next++;
}

// The name must be permanent.
void give_name(armember *member, const char *name) {
    member->name = name;
    member->hash = static_cast<uint16_t>(strhash(name, nullptr, fhash_tab));
}

// Chosen: a "/" without a number behind it, as in the name "/SYM64" of a
// symbol table, is no reference: there is nothing to look up.
bool is_reference(const char *name) {
    if (name[0] != '/') return false;
    const char *number = name + 1 + strspn(name + 1, " \t+-");
    return '0' <= *number && *number <= '9';
}

// Appends a member; one with a long name stays without a name for now.
void add_member(member_list *list, const tovan::ar_entry *entry) {
    armember *member = new_member();
    *member = {nullptr,       nullptr,     nullptr, entry->mtime,
               entry->offset, entry->size, 0,       0};
    *list->tail = member;
    list->tail = &member->next;
    if (is_reference(entry->name)) {
        long_named wanted{member, {}};
        memcpy(wanted.reference, entry->name, sizeof wanted.reference);
        dydadd(&list->long_names, &wanted);
    } else {
        give_name(member, dycache(entry->name, entry->length));
    }
}

void read_members(tovan::archive *archive, member_list *list) {
    tovan::ar_entry entry;
    while (tovan::next_entry(archive, &entry)) {
        const char *ignored = ignore_file(entry.name);
        if (ignored == nullptr) {
            add_member(list, &entry);
        } else if (ignored == long_table) {
            list->table = entry.offset;
            list->table_size = entry.size;
        }
    }
}

// Reads bytes that must be there.
//   name      begins the messages
//   what      is read, in the message about a file that ends before
void read_data(int descriptor, off_t offset, char *buffer, int32_t size,
               const char *name, const char *what) {
    // Not the position itself: errcheck() takes an int.
    errcheck(lseek(descriptor, offset, SEEK_SET) == -1 ? -1 : 0, name);
    size_t count = static_cast<size_t>(size);
    ssize_t got = tovan::read_full(descriptor, buffer, count);
    errcheck(got == -1 ? -1 : 0, name);
    if (static_cast<size_t>(got) < count)
        errexit("%s: could not read %s", name, what);
}

// A permanent copy of the long-name table, with a NUL for each "/": a name is
// what stands at its offset then, and needs no copy of its own.
const char *read_table(const tovan::archive *archive, const member_list *list) {
    size_t size = static_cast<size_t>(list->table_size);
    char *buffer = static_cast<char *>(chkalloc(size + 1));
    read_data(archive->descriptor, list->table, buffer, list->table_size,
              archive->path, "entire long table");
    for (char *at = buffer; at < buffer + size; at++) {
        if (*at == '/') *at = '\0';
    }
    const char *table = dycache(buffer, list->table_size);
    free(buffer);
    return table;
}

// The name at an offset; an empty one where the table has no such place.
const char *name_at(const char *table, int32_t size, const char *reference) {
    long offset = atoln(reference + 1, tovan::ar_name_width);
    return offset < 0 || offset > size ? "" : table + offset;
}

void give_long_names(const tovan::archive *archive, member_list *list) {
    auto *wanted = static_cast<long_named *>(list->long_names.data);
    long_named *end = wanted + list->long_names.count;
    if (wanted == end) return;
    const char *table = nullptr;
    if (list->table != -1) table = read_table(archive, list);
    for (; wanted < end; wanted++) {
        const char *reference = wanted->reference;
        give_name(wanted->member,
                  table != nullptr ? name_at(table, list->table_size, reference)
                                   : dycache(reference, -1));
    }
}

}  // namespace

armember *getarlist(const char *path, int *descriptor) {
    tovan::archive archive;
    tovan::open_archive(&archive, path);
    member_list list{};
    list.tail = &list.head;
    list.table = -1;
    dydnew(&list.long_names, 7, sizeof(long_named));
    read_members(&archive, &list);
    give_long_names(&archive, &list);
    free(list.long_names.data);
    if (descriptor != nullptr) {
        *descriptor = archive.descriptor;
    } else {
        close(archive.descriptor);
    }
    return list.head;
}

char *getarmemb(int descriptor, const armember *member) {
    char *data =
        static_cast<char *>(chkalloc(static_cast<size_t>(member->size)));
    read_data(descriptor, member->offset, data, member->size, member->name,
              "all data");
    return data;
}

void arlmap(const int32_t *map, armember *list) {
    int32_t count = *map;
    const int32_t *pair = map + 1;
    const char *names =
        reinterpret_cast<const char *>(pair + 2 * ptrdiff_t{count});
    for (; count > 0 && list != nullptr; count--, pair += 2) {
        const char *name = names + pair[1];
        if (strcmp(name, list->name) != 0) give_name(list, dycache(name, -1));
        list = list->next;
    }
}

const char *ignore_file(const char *name) {
    for (const char *ignored : ignored_names) {
        if (strcmp(name, ignored) == 0) return ignored;
    }
    return nullptr;
}

TOVAN_IDENT(u_arlist, "8.4", "26/11/22")
