// deflvar.cc: variables of search paths and their defaults.
#include "findfile.h"

#include "ident.h"
#include "private_istype.h"

#include <stddef.h>
#include <stdlib.h>
#include <string.h>

// An installer looks for the marker: do not change it, nor the field's width.
#define ROOT_MARKER "<<HERE>>"
constinit char default_morva_path[100] = ROOT_MARKER "/usr/morva";

namespace {

constexpr size_t marker_length = sizeof ROOT_MARKER - 1;

// What deflvar() is promised to find at `buffer`.
constexpr size_t buffer_size = 100;

constexpr char default_folder[] = "/usr/";

struct default_variable {
    const char *name;
    const char *value;
};

constexpr default_variable dvars[] = {
    {"PATH", "/bin:/usr/bin:/usr/X11R6/bin"},
    {nullptr, nullptr},
};

// The field may have been overwritten in the linked program. The volatile
// pointer keeps any optimiser, one at link time too, from using the text that
// it sees here; the NUL keeps an overlong text from running on.
const char *installed_root() {
    char *volatile field = default_morva_path;
    field[sizeof default_morva_path - 1] = '\0';
    return field + marker_length;
}

char lower_case(char character) {
    if (!tovan::in_class(character, tovan::class_upper)) return character;
    return static_cast<char>(character - 'A' + 'a');
}

const char *folder_of(const char *name, char *buffer) {
    constexpr size_t start = sizeof default_folder - 1;
    memcpy(buffer, default_folder, start);
    size_t length = start;
    for (; *name != '\0' && length < buffer_size - 1; ++name) {
        buffer[length++] = lower_case(*name);
    }
    buffer[length] = '\0';
    return buffer;
}

}  // namespace

const char *deflvar(const char *name, int use_defaults, char *buffer) {
    const char *value = getenv(name);
    if (value != nullptr || use_defaults == 0) return value;
    if (strcmp(name, "MORVA") == 0) return deflmorva(0);
    for (const default_variable *row = dvars; row->name != nullptr; ++row) {
        if (strcmp(name, row->name) == 0) return row->value;
    }
    return folder_of(name, buffer);
}

const char *deflmorva(int force_default) {
    const char *root = force_default != 0 ? nullptr : getenv("MORVA");
    return root != nullptr ? root : installed_root();
}

TOVAN_IDENT(deflvar, "8.4", "26/11/21")
