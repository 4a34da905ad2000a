// dbwork.cc: keyed databases are made, filled and asked.
#include "vop/db.h"

#include "vop/vop.h"

#include "shared/options.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/dystr.h>
#include <tovan/errexit.h>
#include <tovan/getdylin.h>
#include <tovan/kdbminit.h>
#include <tovan/ldbminit.h>
#include <tovan/private_keyed.h>
#include <tovan/usage.h>
#include <unistd.h>

namespace {

constexpr int reading = 3;  // a mode of kdbminit() and ldbminit()

// Either kind; the handle of the other is null.
struct database {
    const char *name;
    kdbm_db texts;
    ldbm_db lines;
};

bool file_exists(const char *name, const char *suffix) {
    char *path = tovan::suffixed(name, suffix);
    bool exists = access(path, F_OK) == 0;
    free(path);
    return exists;
}

// A line that was cut, or has a NUL in it, comes without its newline.
void write_line(const char *, const char *line) {
    fwrite(line, 1, strcspn(line, "\n"), stdout);
    putchar('\n');
}

database open_kind(const char *name, int mode, bool is_index) {
    database opened{name, {}, {}};
    const char *message = is_index
                              ? ldbminit(&opened.lines, name, mode, write_line)
                              : kdbminit(&opened.texts, name, mode);
    if (message != nullptr) errexit("%s: %s: %s", name, message, syserr());
    return opened;
}

database open_existing(const char *name, int mode) {
    if (!file_exists(name, ".dir"))
        errexit("%s: no such database (vop db create makes one)", name);
    return open_kind(name, mode, vop::is_line_index(name));
}

void close_any(database *opened) {
    kdbminit(&opened->texts, nullptr, 0);
    ldbminit(&opened->lines, nullptr, 0, nullptr);
}

const char *reason_of_refusal() {
    return errno == EINVAL ? "too large for a page" : syserr();
}

// The status of an addition; its message, if any, was written.
int status_of_addition(const database *opened, const char *key, int result) {
    if (result == -1)
        errexit("%s: %s: %s", opened->name, key, reason_of_refusal());
    return result == 0 ? 0 : 1;
}

int add_entry(database *opened, const char *key, const char *text,
              char separator) {
    int result = opened->lines.handle != nullptr
                     ? ldbmadd(&opened->lines, key, text)
                     : kdbmadd(&opened->texts, key, text, separator);
    return status_of_addition(opened, key, result);
}

// Adds "KEY TAB TEXT" for each line of standard input.
int add_from_input(database *opened, char separator) {
    int status = 0;
    int number = 0;
    dy line{};
    rdy *reader = rdy_init(STDIN_FILENO);
    while (rdy_getline(reader, &line, 0) != nullptr) {
        number++;
        char *tab = strchr(line.buffer, '\t');
        if (tab == nullptr)
            errexit("standard input:%d: no tab behind the key", number);
        *tab = '\0';
        status |= add_entry(opened, line.buffer, tab + 1, separator);
    }
    free(reader);
    free(line.buffer);
    return status;
}

char separator_of(const char *text) {
    if (strlen(text) != 1) usage("-s %s: not one character", text);
    return *text;
}

const dbm_handle *handle_of(const database *opened) {
    return opened->lines.handle != nullptr ? opened->lines.handle
                                           : opened->texts.handle;
}

bool remove_entry(database *opened, const char *key) {
    if (opened->lines.handle == nullptr)
        return kdbmadd(&opened->texts, key, nullptr, 0) == 0;
    int size = static_cast<int>(strlen(key)) + 1;
    return dbm_delete(opened->lines.handle, {const_cast<char *>(key), size}) ==
           0;
}

bool write_text(database *opened, const char *key) {
    const dbm_datum *text = kdbmfind(&opened->texts, key);
    if (text == nullptr) return false;
    size_t length = strnlen(text->data, static_cast<size_t>(text->length));
    fwrite(text->data, 1, length, stdout);
    putchar('\n');
    return true;
}

bool write_lines(database *opened, const char *key) {
    return ldbmfind(&opened->lines, key) > 0;
}

// Does something for each key; those that are not there are named.
int for_keys(database *opened, char **keys,
             bool (*work)(database *opened, const char *key)) {
    constexpr int error_flag = 2;  // of a handle
    int status = 0;
    for (; *keys != nullptr; keys++) {
        if (work(opened, *keys)) continue;
        if ((handle_of(opened)->flags & error_flag) != 0)
            errexit("%s: %s: a page is damaged (vop db check says more)",
                    opened->name, *keys);
        eprintf("%s: %s: %s: not found\n", progname, opened->name, *keys);
        status = 1;
    }
    close_any(opened);
    return status;
}

// A new database of one kind hides no files of the other.
void refuse_existing(const char *name) {
    constexpr const char *suffixes[] = {".dir", ".pag", ".data"};
    for (const char *suffix : suffixes) {
        if (file_exists(name, suffix))
            errexit("%s%s: already there (-f makes the database anew)", name,
                    suffix);
    }
}

void remove_data_file(const char *name) {
    char *path = tovan::suffixed(name, ".data");
    if (unlink(path) == -1 && errno != ENOENT)
        errexit("%s: %s", path, syserr());
    free(path);
}

}  // namespace

bool vop::is_line_index(const char *name) {
    return file_exists(name, ".data");
}

int vop::create_database(char **arguments) {
    bool is_index = false;
    bool replaces = false;
    tools::options flags = tools::options_of(arguments);
    while (int flag = tools::next_flag(&flags, "lf", nullptr)) {
        if (flag == 'l') is_index = true;
        if (flag == 'f') replaces = true;
    }
    const char *name = the_name(flags.next);
    if (!replaces) refuse_existing(name);
    if (!is_index) remove_data_file(name);
    database opened = open_kind(name, tovan::anew_mode, is_index);
    close_any(&opened);
    return 0;
}

int vop::add_entries(char **arguments) {
    char separator = '\0';
    tools::options flags = tools::options_of(arguments);
    while (tools::next_flag(&flags, "s:", nullptr) != 0)
        separator = separator_of(flags.value);
    char **words = flags.next;
    if (*words == nullptr) usage("add: no name given");
    if (words[1] != nullptr && words[2] == nullptr) usage("add: no text given");
    database opened = open_existing(*words++, tovan::update_mode);
    bool is_index = opened.lines.handle != nullptr;
    if (is_index && separator != '\0')
        usage("add: -s goes with texts, and %s is a line index", opened.name);
    if (*words == nullptr) {
        int status = add_from_input(&opened, separator);
        close_any(&opened);
        return status;
    }
    const char *key = *words++;
    if (!is_index && separator == '\0' && words[1] != nullptr)
        usage("add: a key has one text (-s adds several)");
    int status = 0;
    for (; *words != nullptr; words++)
        status |= add_entry(&opened, key, *words, separator);
    close_any(&opened);
    return status;
}

int vop::get_texts(char **arguments) {
    char **words = plain_arguments(arguments, 2);
    database opened = open_existing(*words, reading);
    if (opened.texts.handle == nullptr)
        errexit("%s: a line index has no texts (vop db lines)", *words);
    return for_keys(&opened, words + 1, write_text);
}

int vop::get_lines(char **arguments) {
    char **words = plain_arguments(arguments, 2);
    database opened = open_existing(*words, reading);
    if (opened.lines.handle == nullptr)
        errexit("%s: no line index (vop db get)", *words);
    return for_keys(&opened, words + 1, write_lines);
}

int vop::delete_entries(char **arguments) {
    char **words = plain_arguments(arguments, 2);
    database opened = open_existing(*words, tovan::update_mode);
    return for_keys(&opened, words + 1, remove_entry);
}
