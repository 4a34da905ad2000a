// db.h: the actions of vop db.
#ifndef TOVAN_TOOLS_DB_H
#define TOVAN_TOOLS_DB_H

#include <stddef.h>
#include <tovan/dystr.h>

namespace vop {

// An action gets the arguments behind its name; its result is the status.
int create_database(char **arguments);
int add_entries(char **arguments);
int get_texts(char **arguments);
int get_lines(char **arguments);
int delete_entries(char **arguments);
int list_entries(char **arguments);
int show_numbers(char **arguments);
int check_database(char **arguments);

// Whether the files of that name are a line index: they have a data file.
bool is_line_index(const char *name);

// The one name that is left behind an action's flags.
const char *the_name(char **arguments);

// Appends bytes, with the control characters among them in printable form.
void add_printable(dy *text, const char *bytes, size_t length);

}  // namespace vop

#endif
