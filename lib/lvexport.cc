// lvexport.cc: exported variables go to the environment.
//
// setenv() looks through the whole environment for each name: a heap that
// exports 100,000 variables would cost some thousand million comparisons. So
// many of them are put in at once: the names of the environment go to a hash
// table, then each variable takes the place of its name or comes to the end,
// as it would with setenv().
#include "lvget.h"

#include "chkalloc.h"
#include "dystr.h"
#include "errexit.h"
#include "ident.h"
#include "private_hash.h"
#include "private_lvget.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

using tovan::hash_slot;
using tovan::hash_table;
using tovan::heap_entry;
using tovan::variable_heap;

namespace {

constexpr size_t few = 64;  // that setenv() may take one by one

// An environment in the making.
struct environment {
    char **strings;
    size_t count;
    hash_table names;  // a slot holds a string's place plus one
    dy text;
};

// The slot of a name's first string, or a free one for it.
hash_slot *slot_of_name(environment *made, const char *name, size_t length) {
    uint32_t tag = tovan::text_tag(name, length);
    auto is_wanted = [=](const hash_slot *slot) {
        const char *own = made->strings[slot->at - 1];
        return strncmp(own, name, length) == 0 && own[length] == '=';
    };
    auto text = [=] { return tovan::hashed_text{name, length, tag}; };
    hash_slot *slot = tovan::slot_for(&made->names, tag, is_wanted, text);
    slot->tag = tag;
    return slot;
}

// Takes over a string as it is; only the first one of a name is ever looked at.
void add_string(environment *made, char *string) {
    made->strings[made->count++] = string;
    const char *equals = strchr(string, '=');
    if (equals == nullptr) return;
    auto length = static_cast<size_t>(equals - string);
    hash_slot *slot = slot_of_name(made, string, length);
    if (slot->at == 0) slot->at = static_cast<uint32_t>(made->count);
}

// The environment as it is, with room for so many variables more.
environment begin(size_t more) {
    size_t count = 0;
    while (environ != nullptr && environ[count] != nullptr)
        ++count;
    environment made{};
    made.strings =
        static_cast<char **>(chkalloc((count + more + 1) * sizeof(char *)));
    made.names = tovan::new_hash_table(count + more);
    for (size_t i = 0; i < count; ++i)
        add_string(&made, environ[i]);
    return made;
}

// As setenv() would; false for what it refuses.
bool set(environment *made, const char *name, const char *value) {
    size_t length = strcspn(name, "=");
    if (length == 0 || name[length] != '\0') return false;
    hash_slot *slot = slot_of_name(made, name, length);
    if (slot->at == 0) {
        slot->at = static_cast<uint32_t>(++made->count);
    } else if (strcmp(made->strings[slot->at - 1] + length + 1, value) == 0) {
        return true;
    }
    dyreuse(&made->text, 64);
    dyfmt(&made->text, "@s=@s", name, value);
    made->strings[slot->at - 1] = dycache(made->text.buffer, -1);
    return true;
}

// The array of the last environment that was made here, in use or not. Filled
// by each load that exports many variables, and released by the next.
constinit char **made_before = nullptr;

// Makes it the environment. As with setenv(), whoever still looks at the array
// of an earlier load must not.
void end(environment *made) {
    made->strings[made->count] = nullptr;
    environ = made->strings;
    free(made_before);
    made_before = made->strings;
    free_hash_table(&made->names);
    free(made->text.buffer);
}

[[noreturn]] void refuse(const char *name) {
    errexit("export of kivs %s failed", name);
}

bool is_exported(const heap_entry *entry) {
    return (tovan::entry_flags(entry) & tovan::heap_export_flag) != 0;
}

void export_one(int, const heap_entry *entry) {
    if (!is_exported(entry)) return;
    const char *name = tovan::entry_name(entry);
    if (newexport(name, tovan::entry_value(entry)) != 0) refuse(name);
}

void export_many(const variable_heap *heap, size_t count) {
    environment made = begin(count);
    const char *refused = nullptr;
    tovan::for_each_entry(heap, [&](int, const heap_entry *entry) {
        if (refused != nullptr || !is_exported(entry)) return;
        const char *name = tovan::entry_name(entry);
        if (!set(&made, name, tovan::entry_value(entry))) refused = name;
    });
    end(&made);
    if (refused != nullptr) refuse(refused);
}

}  // namespace

void tovan::export_variables(const variable_heap *heap) {
    size_t count = 0;
    for_each_entry(heap, [&count](int, const heap_entry *entry) {
        count += is_exported(entry);
    });
    if (count > few) {
        export_many(heap, count);
    } else if (count > 0) {
        for_each_entry(heap, export_one);
    }
}

TOVAN_IDENT(lvexport, "8.4", "26/11/22")
