// sfixfile.cc: fixing a file: its cases, errors, flags and texts.
//
// A case is a subject and branches, each with the patterns of its label:
//
//     @{ @SYSTEM@
//     @| sun* hp*
//             unix text
//     @| *
//             @{ @VERSION@
//             @| 1
//                     old text
//             @}
//     @}
//
// There is no tree and no recursion: what is kept is how many cases are open.
// While a branch is copied, its lines come out one after the other, and a
// case in it is just entered in turn. A label or an esac met while copying
// ends the branch; the rest of its case is skipped by counting. Case and esac
// lines in branches that are not selected are counted, never evaluated,
// though their operands are expanded like those of every control line.
#include "sfixfile.h"

#include "dystr.h"
#include "errexit.h"
#include "fmatch.h"
#include "ident.h"
#include "private_istype.h"
#include "private_sfdict.h"
#include "private_sflines.h"
#include "private_sfproc.h"
#include "sfdict.h"

#include <stdint.h>

using tovan::line_operand;
using tovan::read_line;
using tovan::sf_line;

namespace {

constexpr int unknown_line_place = 257;

// How many cases are open. Set by sfixfile(); below 0 behind an esac too
// many.
constinit int64_t depth = 0;

// The subject of the case that is entered; kept for its room.
constinit dy subject{};

void report_at_line(const char *what) {
    tovan::report_structure("%s:%d: %s", sfixfile_file, sfixfile_lc, what);
}

bool is_separator(char character) {
    return tovan::in_class(character, tovan::class_blank | tovan::class_tab);
}

// Whether one of the patterns, parted by blanks and tabs, matches the
// subject; overwrites the patterns.
bool matches_label(char *next) {
    while (true) {
        while (is_separator(*next))
            ++next;
        if (*next == '\0') return false;
        char *pattern = next;
        while (*next != '\0' && !is_separator(*next))
            ++next;
        if (*next != '\0') *next++ = '\0';
        if (fmatch(subject.buffer, pattern) != 0) return true;
    }
}

// Skips the lines up to the esac of the case that is open.
// Deliberate: behind an esac too many the case counts as open at depth 0
// (test label_behind_a_stray_esac_is_reported).
void skip_case() {
    int64_t inner = depth;
    if (inner < 0) {
        report_at_line("case or label not in switch");
        inner = 0;
    }
    while (true) {
        switch (read_line()) {
            case tovan::line_case:
                ++depth;
                break;
            case tovan::line_esac:
                // Chosen: only an esac ends the skipping, however deep the
                // counting started.
                if (--depth < inner) return;
                break;
            case tovan::line_end:
                return report_at_line("unterminated case");
            default:
                break;
        }
    }
}

// Finds the branch of the case whose line has been read. Afterwards copying
// goes on: in the branch, or behind the esac.
void enter_case() {
    ++depth;
    dyreuse(&subject, 0);
    dynstr(&subject, line_operand()->buffer, line_operand()->length);
    sf_line line = read_line();
    if (line != tovan::line_label)
        report_at_line("first line of case not label");
    for (;; line = read_line()) {
        switch (line) {
            case tovan::line_label:
                if (matches_label(line_operand()->buffer)) return;
                break;
            case tovan::line_esac:
                --depth;
                return;
            case tovan::line_case:
                ++depth;
                skip_case();
                break;
            case tovan::line_end:
                return report_at_line("unterminated case");
            default:
                break;
        }
    }
}

// Deliberate: the first esac too many is accepted in silence; the file then
// ends with an unclosed case (test stray_esac_is_found_at_the_end).
void leave_case() {
    if (depth < 0) return report_at_line("case or label not in switch");
    --depth;
}

void set_flag(const char *operand) {
    if (*operand == 'S')
        sf_splitchar = operand[1];
    else
        tovan::report_structure("@-%s: invalid flag", operand);
}

// Acts on a control line.
void obey(sf_line line) {
    switch (line) {
        case tovan::line_case:
            return enter_case();
        case tovan::line_label:
            return skip_case();
        case tovan::line_esac:
            return leave_case();
        case tovan::line_error:
            return tovan::report_structure("Error: %s", line_operand()->buffer);
        case tovan::line_comment:
            return;
        case tovan::line_flag:
            return set_flag(line_operand()->buffer);
        default:
            errexit("logic error %s %d", "lib/sfixfile", unknown_line_place);
    }
}

void copy_text() {
    tovan::sf_output text = tovan::expand_line(depth);
    if ((sf_uflag & tovan::write_nothing) == 0)
        sfput(text.start, text.length, 1);
}

void fix_lines() {
    for (sf_line line; (line = read_line()) != tovan::line_end;) {
        if (line == tovan::line_text)
            copy_text();
        else
            obey(line);
    }
}

// Reading control lines and expanding texts traces the names; nothing else
// is done.
void trace_lines() {
    for (sf_line line; (line = read_line()) != tovan::line_end;) {
        if (line == tovan::line_text) tovan::expand_line(0);
    }
}

}  // namespace

int sfixfile(const char *path, int check) {
    tovan::open_fixed(path, check);
    depth = 0;
    sf_dictext("__FILE__", path, "built-in", 0, tovan::sf_set);
    if ((sf_uflag & tovan::trace_names) != 0)
        trace_lines();
    else
        fix_lines();
    tovan::close_fixed();
    if (depth != 0)
        tovan::report_structure("%s: unclosed case statement", path);
    return tovan::fixed_status();
}

TOVAN_IDENT(sfixfile, "8.4", "26/11/21")
