// private_sflines.h (private): the lines of the file that is being fixed.
// Builds on: dystr.h.
#ifndef TOVAN_PRIVATE_SFLINES_H
#define TOVAN_PRIVATE_SFLINES_H

#include "dystr.h"

#include <stdint.h>

namespace [[gnu::visibility("hidden")]] tovan {

enum sf_line {
    line_end = 0,
    line_text = 1,
    line_case = 2,
    line_label = 3,
    line_esac = 4,
    line_error = 5,
    line_comment = 6,
    line_flag = 7,
};

// A line on its way out.
struct sf_output {
    char *start;
    int length;
};

// Opens a file and makes it the one that is fixed.
//   check     not 0: lines with a wrong reference are reported
void open_fixed(const char *path, int check);

// Reads the next line; of a control line the operand is expanded.
sf_line read_line();

// The operand of the control line read last; valid until the next line.
dy *line_operand();

// Expands the text line read last, without up to `tabs` leading tabs, and
// puts a newline behind it.
//   result    valid until the next line
sf_output expand_line(int64_t tabs);

// Reports a structural error: fatal when sf_uflag is 0.
[[gnu::format(printf, 1, 2)]] void report_structure(const char *format, ...);

void close_fixed();

// What sfixfile() returns.
int fixed_status();

}  // namespace tovan

#endif
