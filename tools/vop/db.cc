// db.cc: keyed databases.
#include "vop/db.h"

#include "vop/vop.h"

#include <string.h>
#include <tovan/istype.h>
#include <tovan/usage.h>

namespace {

constexpr const char *explanation[] = {
    "Keeps texts under keys, or lists of lines under keys, on disk.",
    "A database NAME is the files NAME.dir and NAME.pag; a line index has",
    "its lines in NAME.data. The actions:",
    "",
    "create [-l] [-f] NAME",
    "\t\tmakes an empty database, or with -l a line index; with -f in place",
    "\t\tof one that is there",
    "add [-s C] NAME KEY TEXT...",
    "\t\tgives the key a text, or with -s adds texts behind the character C",
    "\t\tto the one it has; in a line index the texts are lines. Without KEY",
    "\t\tlines `KEY TAB TEXT' are read from standard input",
    "get NAME KEY...",
    "\t\twrites the texts of keys",
    "lines NAME KEY...",
    "\t\twrites the lines of keys",
    "del NAME KEY...",
    "\t\tremoves keys",
    "list NAME",
    "\t\twrites all keys with their texts or lines, as add reads them",
    "stat NAME",
    "\t\twrites sizes and numbers",
    "check [-b] NAME",
    "\t\tlooks at every page and says what is wrong; with -b keys and values",
    "\t\tmay be any bytes, as other programs keep them",
    "",
    "Status 1: a key was not there, a text was refused, or a page is wrong.",
    "",
    "Example: vop db create k && vop db add k CC gcc && vop db get k CC",
    nullptr,
};

struct action {
    const char *name;
    int (*run)(char **arguments);
};

constexpr action actions[] = {
    {"create", vop::create_database}, {"add", vop::add_entries},
    {"get", vop::get_texts},          {"lines", vop::get_lines},
    {"del", vop::delete_entries},     {"list", vop::list_entries},
    {"stat", vop::show_numbers},      {"check", vop::check_database},
};

int run(char **arguments) {
    char **words = vop::plain_arguments(arguments, 0);
    if (*words == nullptr) usage("no action given");
    for (const action &known : actions) {
        if (strcmp(known.name, *words) == 0) return known.run(words + 1);
    }
    usage("%s: unknown action", *words);
}

}  // namespace

const char *vop::the_name(char **arguments) {
    if (arguments[0] == nullptr) usage("no name given");
    if (arguments[1] != nullptr) usage("%s: one name too many", arguments[1]);
    return arguments[0];
}

void vop::add_printable(dy *text, const char *bytes, size_t length) {
    for (size_t i = 0; i < length; i++) {
        auto c = static_cast<unsigned char>(bytes[i]);
        bool is_control = c < ' ' || c == 0x7f;
        if (is_control)
            dystr(text, rep_char[c]);
        else
            dyaddc(text, c);
    }
}

constinit const vop::command vop::db = {"db", "db ACTION NAME [ARGUMENT...]",
                                        explanation, ::run};
