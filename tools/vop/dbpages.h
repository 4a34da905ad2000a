// dbpages.h: the pages of a database as they are, whatever they hold
// (docs/formats/keyed-database.md).
#ifndef TOVAN_TOOLS_DBPAGES_H
#define TOVAN_TOOLS_DBPAGES_H

#include <stddef.h>
#include <sys/types.h>
#include <tovan/dystr.h>

namespace vop {

struct page_files {
    char *dir_path;
    char *pag_path;
    int dir;
    int pag;
    off_t dir_size;
    off_t pag_size;
    size_t page_size;     // 0: the directory states none
    unsigned char *page;  // the one that was read last
    size_t held;          // bytes of it that the file holds
};

struct page_pair {
    const char *key;
    size_t key_length;
    const char *value;
    size_t value_length;
};

// Opens both files for reading.
//   fails     ends the program: "FILE: reason"
page_files open_pages(const char *name);

void close_pages(page_files *files);

// Reads the first page from a number on of which the file holds something;
// holes are passed over.
//   result    its number, or -1 behind the last
off_t read_page_from(page_files *files, off_t number);

// Whether the page keeps the rules of its form; the rule that it breaks goes
// to `flaw`.
bool is_valid_page(const page_files *files, dy *flaw);

// Of a valid page; pairs are counted from 1.
size_t pair_count(const page_files *files);
page_pair pair_at(const page_files *files, size_t number);

// Opens one file for reading.
//   size      where its size goes
//   fails     ends the program: "FILE: reason"
int open_part(const char *path, off_t *size);

// Reads what a part holds of a range; the rest becomes zeros.
//   result    how many bytes it held
//   fails     ends the program: "FILE: reason"
size_t read_range(int descriptor, const char *path, off_t at,
                  unsigned char *bytes, size_t size);

// Where a part goes on behind its holes; its size when nothing is left.
off_t next_data(int descriptor, off_t at, off_t size);

}  // namespace vop

#endif
