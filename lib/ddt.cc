// ddt.cc: named trace points.
#include "ddt.h"

#include "errexit.h"
#include "fastout.h"
#include "ident.h"
#include "private_error.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace {

constexpr size_t area_size = 512;
constexpr size_t most_flags = area_size - 2;  // a "," and the terminator
constexpr unsigned unknown_level = 65535;
constexpr unsigned level_mask = 0xffff;

// All flags, each addition behind a ",". Filled by ddt_addflags(), emptied by
// ddt_setup().
struct flag_area {
    char text[area_size];
    size_t length;
    const char *all;    // behind the last "all"; null when there was none
    bool all_is_valid;  // `all` has seen the whole text
};
constinit flag_area flags{};

// The packages that were looked up or set. Ends in a record of our own, so
// that null means "not linked".
constinit ddt last_known{};
constinit ddt *known = &last_known;

constexpr const char *help[] = {
    "A debug flag string is a comma separated list of items,",
    "where an item is one of:",
    "",
    "\t<name>=<number>",
    "\t<name>\t\t# value defaults to 1",
    "\t<name>-\t\t# indicates package turned off",
    "",
    "<number> can be a decimal, octal (first digit is `0'),",
    "or hexadecimal digits (begins with `0x').",
    "The last specified setting for a name or its alias is the one used.",
    "",
    "To determine what -V <names> are supported by a particular program use:",
    "",
    "\twhat <program> | grep '^-D'",
    "",
    "``all'' is an alias for any package name that is followed by ``|all''.",
    nullptr,
};

void print_program() {
    if (progname != nullptr) eprintf("%s: ", progname);
}

// What stands in front of the caller's message.
void print_prefix(const ddt *package, unsigned level) {
    constexpr int longest_name = sizeof package->name;
    print_program();
    eprintf("%.*s(%d) ", longest_name, package->name, static_cast<int>(level));
}

void link(ddt *package) {
    if (package->next != nullptr) return;
    package->next = known;
    known = package;
}

bool ends_name(char c) {
    return c == '\0' || c == ',' || c == '-' || c == '=';
}

// What follows the name when the item behind a "," has it; else null.
const char *suffix_of(const char *comma, const char *name, size_t length) {
    const char *item = comma + 1;
    size_t left = static_cast<size_t>(flags.text + flags.length - item);
    if (left < length || memcmp(item, name, length) != 0) return nullptr;
    return ends_name(item[length]) ? item + length : nullptr;
}

// The suffix of the last matching item from `text` on, or `match`.
const char *last_match(const char *text, const char *match, const char *name,
                       size_t length) {
    for (; (text = strchr(text, ',')) != nullptr; text++) {
        const char *suffix = suffix_of(text, name, length);
        if (suffix != nullptr) match = suffix;
    }
    return match;
}

void add_environment() {
    char name[32 + sizeof "_debug"];
    const char *program = progname != nullptr ? progname : "";
    snprintf(name, sizeof name, "%.32s_debug", program);
    const char *value = getenv(name);
    if (value == nullptr || *value == '\0') value = getenv("KRT_debug");
    if (value != nullptr && *value != '\0') ddt_addflags(value);
}

bool is_on(const char *suffix) {
    return suffix != nullptr && *suffix != '-';
}

}  // namespace

void ddt_setup(void) {
    flags = {};
    ddt_clear();
    add_environment();
}

void ddt_addflags(const char *text) {
    if (text == nullptr) return;
    size_t length = strlen(text);
    if (length > most_flags || flags.length + length > most_flags) {
        print_program();
        tovan::error("Warning: ddt_flags area overflow - flags not added");
        return;
    }
    ddt_clear();
    flags.text[flags.length] = ',';
    memcpy(flags.text + flags.length + 1, text, length + 1);
    flags.length += length + 1;
}

void ddt_Vflags(const char *text) {
    if (strcmp(text, "x") != 0) {
        ddt_addflags(text);
        return;
    }
    putlist(help, stdout, 1);
    lclexit(0);
}

void ddt_clear(void) {
    for (ddt *package = known; package != &last_known;
         package = package->next) {
        package->level = unknown_level;
        package->looked_up = 0;
    }
    flags.all_is_valid = false;
}

int ddt_trace(ddt *package, unsigned level, int print) {
    if (level > package->level) return 0;
    if (!package->looked_up &&
        level > static_cast<unsigned>(ddt_level(package)))
        return 0;
    if (print) print_prefix(package, level);
    return 1;
}

int ddt_level(ddt *package) {
    link(package);
    const char *start = flags.text;
    const char *match = nullptr;
    // Deliberate: what stands before the last "all" is ignored (test
    // ddt_all_resets_what_came_before).
    if (package->accepts_all && ddt_allptr() != nullptr)
        start = match = flags.all;
    match = last_match(start, match, package->name,
                       static_cast<size_t>(package->name_length));
    package->looked_up = 1;
    return package->initialiser(package, match);
}

int ddt_level_init(ddt *package, const char *suffix) {
    unsigned level = is_on(suffix);
    if (level && *suffix == '=') level = ddt_atoi(suffix + 1);
    package->level = level & level_mask;
    return static_cast<int>(level);
}

int ddt_value_init(ddt *package, const char *suffix) {
    package->level = is_on(suffix);
    package->value = 0;
    if (is_on(suffix) && *suffix == '=')
        package->value = static_cast<int>(ddt_atoi(suffix + 1));
    return static_cast<int>(package->level);
}

// The flags only grow between setups: the last hit is a place to start from.
const char *ddt_allptr(void) {
    constexpr char name[] = "all";
    if (flags.all_is_valid) return flags.all;
    const char *start = flags.all != nullptr ? flags.all : flags.text;
    flags.all = last_match(start, flags.all, name, sizeof name - 1);
    flags.all_is_valid = true;
    return flags.all;
}

int *ddt_set(int save[3], ddt *package, unsigned level, int value) {
    save[0] = static_cast<int>(package->level);
    save[1] = package->looked_up;
    save[2] = package->value;
    link(package);
    ddt_reset(package, level, 1, value);
    return save;
}

void ddt_reset(ddt *package, unsigned level, int looked_up, int value) {
    package->level = level;
    package->looked_up = looked_up;
    package->value = value;
}

// Deliberate: 8 and 9 count as digits in octal (test ddt_atoi_rows).
unsigned ddt_atoi(const char *text) {
    unsigned base = 10;
    if (text[0] == '0') {
        bool is_hexadecimal = text[1] == 'x' || text[1] == 'X';
        base = is_hexadecimal ? 16 : 8;
        text += is_hexadecimal ? 2 : 1;
    }
    unsigned number = 0;
    for (;; text++) {
        char c = *text;
        unsigned digit;
        if (c >= '0' && c <= '9')
            digit = static_cast<unsigned>(c - '0');
        else if (base == 16 && c >= 'a' && c <= 'f')
            digit = static_cast<unsigned>(c - 'a' + 10);
        else if (base == 16 && c >= 'A' && c <= 'F')
            digit = static_cast<unsigned>(c - 'A' + 10);
        else
            return number;
        number = number * base + digit;
    }
}

TOVAN_IDENT(ddt, "8.4", "26/11/21")
