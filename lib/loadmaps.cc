// loadmaps.cc: files of root mappings (docs/formats/root-maps.md).
#include "map_root.h"

#include "chkalloc.h"
#include "dypadd.h"
#include "dystr.h"
#include "errexit.h"
#include "fmatch.h"
#include "getdylin.h"
#include "gethome.h"
#include "ident.h"
#include "private_error.h"
#include "private_map_root.h"
#include "private_openread.h"
#include "strutil.h"
#include "sysnames.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>

namespace {

constexpr int config_field = 6;  // in the record of sysnames()

struct map_reader {
    const char *file;
    int line;
    bool skipping;  // the last condition does not hold
};

void warn(const map_reader *in, const char *text) {
    tovan::error("Warning: %s:%d: %s", in->file, in->line, text);
}

// 0 for a letter that is no type.
int type_of(char letter) {
    switch (letter) {
        case 'D':
            return tovan::drive_mapping;
        case 'M':
            return tovan::root_mapping;
        case 'P':
            return tovan::p_mapping;
        case 'U':
            return tovan::tree_mapping;
        default:
            return 0;
    }
}

void read_mapping(const map_reader *in, const char *from) {
    int type = tovan::root_mapping;
    if (from[1] == '>') {
        type = type_of(from[0]);
        // Deliberate: the text leaves "U" out (test
        // load_mappings_warns_about_other_letters).
        if (type == 0) return warn(in, "mapping type not one of [MPD]>");
        from = overwhite(from + 2);
    }
    const char *from_end = nextwhite(from);
    const char *to = overwhite(from_end);
    if (*to == '\0') return warn(in, "2nd path not specified");
    size_t fromlen = static_cast<size_t>(from_end - from);
    size_t tolen = static_cast<size_t>(nextwhite(to) - to);
    add_map(type, savenstr(from, fromlen), static_cast<int>(fromlen),
            savenstr(to, tolen));
}

// What was read of a line before an error is no mapping. A folder reads as
// nothing (test a_folder_reads_as_nothing).
void report_error(map_reader *in, FILE *stream) {
    if (ferror(stream) == 0 || errno == EISDIR) return;
    ++in->line;
    warn(in, syserr());
}

void read_line(map_reader *in, char *line) {
    switch (*line) {
        case '\0':
        case '#':
            return;
        case '=':
        case '!':
            in->skipping = chk_host(line + 1, *line == '!') != 0;
            return;
        default:
            if (!in->skipping) read_mapping(in, line);
    }
}

bool matches_some(const char *name, char *patterns) {
    dyp *words = dypflist(nullptr);
    dypsplit(words, patterns, 0);
    bool matched = false;
    for (int i = 0; i < words->count && !matched; ++i) {
        const char *pattern = static_cast<const char *>(words->array[i]);
        matched = fmatch(name, pattern) != 0;
    }
    dypflist(words);
    return matched;
}

}  // namespace

void load_mappings(const char *file, int must_exist) {
    FILE *stream = tovan::open_for_reading(file);
    if (stream == nullptr) {
        if (must_exist != 0)
            tovan::error("%s: cannot open (%s)", file, syserr());
        return;
    }
    map_reader in = {file, 0, false};
    dy line{};
    // Chosen: blanks before a directive do not count, so that lines under a
    // condition can be indented.
    while (getdyline(stream, &line, 0) != nullptr && ferror(stream) == 0) {
        ++in.line;
        read_line(&in, overwhite(line.buffer));
    }
    report_error(&in, stream);
    free(line.buffer);
    fclose(stream);
}

int chk_host(char *condition, int invert) {
    bool of_system = *condition == 's';
    if (of_system) condition = overwhite(condition + 1);
    const char *name =
        of_system ? sysnames(0, nullptr)[config_field] : get_host();
    return matches_some(name, condition) ? invert : !invert;
}

TOVAN_IDENT(loadmaps, "8.4", "26/11/21")
