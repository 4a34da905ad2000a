// putcols.cc: lists on standard output.
#include "fastout.h"

#include "ident.h"

#include <string.h>

namespace {

// A list in columns: the first `full` columns hold `rows` entries each, the
// others one fewer.
//
//     1  3  4  5      5 entries in 4 columns: 2 rows, 1 full column
//     2
struct layout {
    long columns;
    long rows;
    long full;

    long entry(long row, long column) const {
        if (column <= full) return column * rows + row;
        return full * rows + (column - full) * (rows - 1) + row;
    }

    long entries_in(long row) const {
        return row < rows - 1 ? columns : full;
    }
};

layout lay_out(long count, long columns) {
    long rest = count % columns;
    return {columns, (count + columns - 1) / columns,
            rest != 0 ? rest : columns};
}

long longest(const char *const *list) {
    size_t most = 0;
    for (; *list != nullptr; list++) {
        size_t length = strlen(*list);
        if (length > most) most = length;
    }
    return static_cast<long>(most);
}

long count_of(const char *const *list) {
    long count = 0;
    while (list[count] != nullptr)
        count++;
    return count;
}

void put_row(const char *const *list, const layout &grid, long row, int width) {
    long last = grid.entries_in(row) - 1;
    for (long column = 0; column <= last; column++)
        putstr(list[grid.entry(row, column)], width, column == last);
}

}  // namespace

void putstr(const char *text, int width, int last) {
    if (last) {
        puts(text);
        return;
    }
    fputs(text, stdout);
    for (size_t length = strlen(text); static_cast<long>(length) < width;
         length++)
        putchar(' ');
}

void putcols(const char *prefix, const char *const *list, int width,
             int column_width) {
    if (prefix == nullptr) prefix = "";
    long cell = 1 + (column_width >= 1 ? column_width : longest(list));
    long space = width - static_cast<long>(strlen(prefix)) - 1;
    long columns = space / cell;
    // Chosen: where not even one cell fits, lines get as long as they must.
    if (columns < 1) columns = 1;
    layout grid = lay_out(count_of(list), columns);
    for (long row = 0; row < grid.rows; row++) {
        fputs(prefix, stdout);
        put_row(list, grid, row, static_cast<int>(space / columns));
    }
}

void putlist(const char *const *list, FILE *stream, int newline) {
    for (; *list != nullptr; list++) {
        fputs(*list, stream);
        if (newline) putc('\n', stream);
    }
}

TOVAN_IDENT(putcols, "8.4", "26/11/21")
