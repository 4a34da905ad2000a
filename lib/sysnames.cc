// sysnames.cc: the host's system names (docs/formats/system-names.md).
#include "sysnames.h"

#include "chkalloc.h"
#include "dypadd.h"
#include "dystr.h"
#include "errexit.h"
#include "findfile.h"
#include "fmatch.h"
#include "getdylin.h"
#include "ident.h"
#include "private_error.h"
#include "private_openread.h"
#include "strutil.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/utsname.h>

namespace {

enum field { os = 3, release, cpu, config, platform, fields };

enum flag { list_only = 1, report_only = 2, trace = 4 };

constexpr int fewest_values = 3;

// Deliberate: a table never gives the last field (test
// sysnames_takes_three_to_seven_values).
constexpr int most_values = fields - 1;

// Most joined names are shorter; longer ones grow.
constexpr int text_room = 120;

// A value that is left to the default.
constexpr char open_value[] = "^";

// The host and the search. The system's part is filled by the first search,
// the rest by each one until a line matches; then it holds for the process,
// because the record points into it.
struct sysnames_state {
    const char *table;  // the tool's own; null: the installation's
    struct utsname system;
    const char *system_name;  // null: not asked yet
    const char *system_release;
    const char *machine;
    char platform_text[257];  // reserved: never anything but "^"
    dy match_text;
    dy line;
    dyp words;
    dy config_text;
    bool matched;
};
constinit sysnames_state names{};

constexpr const char *field_names[fields] = {
    "Name", "SysVrs", "Base", "OS", "Release", "CPU", "Config", "Platform"};

// The values, then the names; filled by the first match, for the process.
constinit char *record[2 * fields]{};

void ask_system() {
    if (names.system_name != nullptr) return;
    if (uname(&names.system) == -1) errexit("uname() failed, %s", syserr());
    names.system_release = unms_fix(names.system.release);
    names.machine = unms_fix(names.system.machine);
    names.system_name = unms_fix(names.system.sysname);
}

void form_match_text() {
    strcpy(names.platform_text, open_value);
    dyreuse(&names.match_text, text_room);
    dyfmt(&names.match_text, "@s//@s//@s//@s", names.system_name,
          names.system_release, names.machine, names.platform_text);
}

struct table_reader {
    const char *file;
    FILE *stream;
    int line;  // the last physical line read
};

// Whether a line was read. What was read of one before an error is no line.
bool is_read(const table_reader *in, const char *line) {
    if (ferror(in->stream) != 0) errexit("%s: %s", in->file, syserr());
    return line != nullptr;
}

bool ends_with_backslash(const dy *line) {
    return line->length > 0 && line->buffer[line->length - 1] == '\\';
}

void join_continuations(table_reader *in, dy *line) {
    while (ends_with_backslash(line)) {
        line->buffer[line->length - 1] = ' ';
        if (!is_read(in, getdycline(in->stream, line, 0))) {
            fclose(in->stream);
            errexit("%s:%d: last line ends with a backslash", in->file,
                    in->line);
        }
        ++in->line;
    }
}

// Splits the next line that is no comment into words; false at the end.
// Chosen: a comment is not continued, so that one can hold the backslash of
// a line that was commented out.
bool next_line(table_reader *in) {
    while (is_read(in, getdyline(in->stream, &names.line, 0))) {
        ++in->line;
        const char *text = overwhite(names.line.buffer);
        if (*text == '\0' || *text == '#') continue;
        join_continuations(in, &names.line);
        dypreuse(&names.words);
        dypsplit(&names.words, names.line.buffer, 0);
        if (names.words.count > 0) return true;
    }
    return false;
}

const char *word(int index) {
    return static_cast<const char *>(names.words.array[index]);
}

void list_table(table_reader *in) {
    while (next_line(in)) {
        for (int i = 0; i < names.words.count; ++i) {
            if (i > 0) putchar('\t');
            fputs(word(i), stdout);
        }
        putchar('\n');
    }
}

bool find_line(table_reader *in, int flags) {
    while (next_line(in)) {
        if ((flags & trace) != 0)
            tovan::error("sysnames(): trying '%s'", word(0));
        if (fmatch(names.match_text.buffer, word(0)) != 0) return true;
    }
    return false;
}

void check_number_of_values(const table_reader *in) {
    int values = names.words.count - 1;
    if (values < fewest_values)
        errexit("%s:%d: too few fields", in->file, in->line);
    if (values > most_values)
        errexit("%s:%d: too many fields", in->file, in->line);
}

void fill_record() {
    for (int i = 0; i < fields; ++i) {
        bool given = i + 1 < names.words.count;
        record[i] = const_cast<char *>(given ? word(i + 1) : open_value);
        record[fields + i] = const_cast<char *>(field_names[i]);
    }
    set_sys_defl(os, names.system_name);
    set_sys_defl(release, names.system_release);
    set_sys_defl(cpu, names.machine);
    set_sys_defl(platform, names.platform_text);
    dyreuse(&names.config_text, text_room);
    set_sys_defl(config, dyfmt(&names.config_text, "@s-@s-@s", record[os],
                               record[release], record[cpu]));
    names.matched = true;
}

void search_table(const char *file, int flags) {
    ask_system();
    form_match_text();
    if ((flags & trace) != 0)
        tovan::error("sysnames(): file=%s\n\tpattern='%s'", file,
                     names.match_text.buffer);
    table_reader in = {file, tovan::open_for_reading(file), 0};
    ferrcheck(in.stream, file);
    bool found = false;
    if ((flags & list_only) != 0)
        list_table(&in);
    else
        found = find_line(&in, flags);
    fclose(in.stream);
    if ((flags & list_only) != 0) return;
    if (!found) errexit("%s not matched in %s", names.match_text.buffer, file);
    // The text brings a newline of its own: an empty line ends the trace.
    if ((flags & trace) != 0) tovan::error("sysnames(): match succeeded\n");
    check_number_of_values(&in);
    fill_record();
}

}  // namespace

char **sysnames(int flags, char **file) {
    if (names.matched) return record;
    char *located = nullptr;
    const char *table = names.table;
    if (table == nullptr)
        table = located = findfile("data/sysnames.tab", "%MORVA", 1);
    if (file != nullptr) *file = savestr(table);
    if ((flags & report_only) == 0) search_table(table, flags);
    free(located);
    return names.matched ? record : nullptr;
}

void setsysnamestab(const char *file) {
    names.table = file;
}

void set_sys_defl(int index, const char *value) {
    if (index < 0 || index >= fields || record[index] == nullptr) return;
    if (strcmp(record[index], open_value) == 0)
        record[index] = const_cast<char *>(value);
}

char *unms_fix(char *text) {
    if (strchr(text, ' ') == nullptr) return text;
    char *copy = savestr(text);
    for (char *at = copy; (at = strchr(at, ' ')) != nullptr;)
        *at = '_';
    return copy;
}

TOVAN_IDENT(sysnames, "8.4", "26/11/21")
