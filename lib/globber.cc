// globber.cc: the paths that match a pattern.
#include "globber.h"

#include "chkalloc.h"
#include "dystr.h"
#include "fmatch.h"
#include "ident.h"
#include "private_error.h"

#include <dirent.h>
#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

// A pattern is taken apart into levels, one for each component with a
// wildcard and the text before it, and one for what is left behind the last:
// "a/b/x*/c/[de]/f" is {a/b, x*}, {c, [de]} and {f}. Each level has a
// directory open and reads it; a name that matches opens the directory of the
// next level, and the end of a directory leads back one level. The path is
// one string, and each level knows where its names begin in it.

constinit int glob_dump = 0;

namespace {

enum level_type {
    at_root = 1,    // "/" before the first wildcard
    here = 2,       // nothing before it
    below = 3,      // nothing before it, on a later level
    with_text = 4,  // literal directories before it
    text_only = 5,  // no wildcard: the last level
};

struct level {
    level_type type;
    const char *pattern;  // in the scratch copy
    const char *dir;      // types with_text and text_only own it
    int prefix;           // length of the path before this level's names
    DIR *handle;
};

constexpr size_t levels_at_once = 10;

// The iteration. Filled by globber(pattern); blocks and strings are kept for
// the next one and never released.
struct glob_state {
    level *levels;
    size_t count;
    size_t capacity;
    ptrdiff_t index;  // of the level being read; -1: there is none
    dy path;
    dy pattern;
};
constinit glob_state glob = {.levels = nullptr,
                             .count = 0,
                             .capacity = 0,
                             .index = -1,
                             .path = {},
                             .pattern = {}};

void close_level(level *each) {
    if (each->handle != nullptr) closedir(each->handle);
    each->handle = nullptr;
}

void clear_levels() {
    for (size_t i = 0; i < glob.count; ++i) {
        level *each = &glob.levels[i];
        close_level(each);
        if (each->type == with_text || each->type == text_only)
            free(const_cast<char *>(each->dir));
    }
    glob.count = 0;
    glob.index = -1;
}

void add_level(level_type type, const char *dir, const char *pattern) {
    if (glob.count == glob.capacity) {
        // A long pattern is not copied over and over.
        glob.capacity += glob.capacity / 2 + levels_at_once;
        glob.levels = static_cast<level *>(
            chkrealloc(glob.levels, glob.capacity * sizeof *glob.levels));
    }
    glob.levels[glob.count++] = {type, pattern, dir, 0, nullptr};
}

// A group with a wildcard that ends at `end`, where the terminator goes. Its
// last slash before the wildcard is at `slash`, or null.
void add_wild_level(char *start, char *slash, char *end) {
    *end = '\0';
    const char *pattern = slash != nullptr ? slash + 1 : start;
    if (slash != nullptr && slash > start) {
        size_t length = static_cast<size_t>(slash - start);
        add_level(with_text, savenstr(start, length), pattern);
    } else if (start != glob.pattern.buffer) {
        add_level(below, "", pattern);
    } else if (slash != nullptr) {
        add_level(at_root, "/", pattern);
    } else {
        add_level(here, ".", pattern);
    }
}

void split_pattern() {
    char *start = glob.pattern.buffer;
    char *slash = nullptr;
    bool wild = false;
    for (char *next = start;; ++next) {
        switch (*next) {
            case '*':
            case '?':
            case '[':
                wild = true;
                break;
            case '/':
                if (!wild) {
                    slash = next;
                    break;
                }
                add_wild_level(start, slash, next);
                start = next + 1;
                slash = nullptr;
                wild = false;
                break;
            case '\0':
                if (wild) {
                    add_wild_level(start, slash, next);
                } else {
                    add_level(text_only, savestr(start), "");
                }
                return;
        }
    }
}

void dump_levels(const char *pattern) {
    tovan::error("pat=%s", pattern);
    for (size_t i = 0; i < glob.count; ++i) {
        const level &each = glob.levels[i];
        tovan::error("%4d: type=%d; dir=%s; pat=%s;", static_cast<int>(i),
                     each.type, each.dir, each.pattern);
    }
}

DIR *open_directory(const char *path) {
    DIR *handle;
    do {
        handle = opendir(path);  // close-on-exec
    } while (handle == nullptr && errno == EINTR);
    return handle;
}

// Chosen: one slash where two parts join, however many the pattern has there.
void append_part(const char *part) {
    dyaddslash(&glob.path);
    while (*part == '/')
        ++part;
    dystr(&glob.path, part);
}

// Makes a level the current one; its directory is the path so far, or the
// current directory.
bool enter_level(level *entered) {
    const char *directory = glob.path.length > 0 ? glob.path.buffer : ".";
    entered->handle = open_directory(directory);
    if (entered->handle == nullptr) return false;
    dyaddslash(&glob.path);
    entered->prefix = glob.path.length;
    glob.index = entered - glob.levels;
    return true;
}

bool is_dot_or_dots(const char *name) {
    return name[0] == '.' &&
           (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

bool may_be_directory(const dirent *entry) {
    return entry->d_type == DT_DIR || entry->d_type == DT_LNK ||
           entry->d_type == DT_UNKNOWN;
}

// The path ends with a name of the level before. True when it is complete with
// the text of the last level; a level that can be entered is entered.
bool descend(level *next) {
    append_part(next->dir);
    if (next->type != text_only) {
        enter_level(next);
        return false;
    }
    struct stat status;
    return stat(glob.path.buffer, &status) == 0;
}

// Takes the next entry of the current level; true when a path is complete.
bool take_entry(const dirent *entry) {
    level *current = &glob.levels[glob.index];
    bool is_last = current + 1 == glob.levels + glob.count;
    if (is_dot_or_dots(entry->d_name)) return false;
    if (!is_last && !may_be_directory(entry)) return false;
    if (!fmatch(entry->d_name, current->pattern)) return false;
    dytruncate(&glob.path, current->prefix);
    dystr(&glob.path, entry->d_name);
    return is_last || descend(current + 1);
}

char *next_path() {
    while (glob.index >= 0) {
        level *current = &glob.levels[glob.index];
        const dirent *entry = readdir(current->handle);
        if (entry == nullptr) {
            close_level(current);
            --glob.index;
        } else if (take_entry(entry)) {
            return glob.path.buffer;
        }
    }
    return nullptr;
}

char *first_path(const char *pattern) {
    // The pattern may be the path that was returned last.
    dyreuse(&glob.pattern, 1);
    dystr(&glob.pattern, pattern);
    clear_levels();
    split_pattern();
    if (glob_dump != 0) dump_levels(pattern);
    dyreuse(&glob.path, 1);
    level *first = &glob.levels[0];
    if (first->type != here) dystr(&glob.path, first->dir);
    if (first->type == text_only) return glob.path.buffer;
    return enter_level(first) ? next_path() : nullptr;
}

}  // namespace

char *globber(const char *pattern) {
    return pattern != nullptr ? first_path(pattern) : next_path();
}

TOVAN_IDENT(globber, "8.4", "26/11/21")
