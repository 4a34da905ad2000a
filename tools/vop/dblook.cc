// dblook.cc: what keyed databases hold.
#include "vop/db.h"

#include "vop/dbpages.h"
#include "vop/dbtree.h"
#include "vop/vop.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <tovan/ddbm.h>
#include <tovan/errexit.h>
#include <tovan/ldbminit.h>
#include <tovan/private_keyed.h>

using vop::page_files;
using vop::page_pair;

namespace {

// Calls work(page) for each valid page that holds pairs, while it is read.
//   result    the status: 1 when a page was not valid, which is said
template <typename Work>
int for_pages(page_files *files, Work work) {
    int status = 0;
    dy flaw{};
    for (off_t page = 0; (page = vop::read_page_from(files, page)) != -1;
         page++) {
        dyreuse(&flaw, 64);
        if (!vop::is_valid_page(files, &flaw)) {
            eprintf("%s: %s: page %lld: %s\n", progname, files->pag_path,
                    static_cast<long long>(page), flaw.buffer);
            status = 1;
        } else if (vop::pair_count(files) > 0) {
            work(page);
        }
    }
    free(flaw.buffer);
    return status;
}

// Calls work(pair) for each pair that a look-up finds: a split that was cut
// short leaves copies of others behind.
template <typename Work>
int for_pairs(page_files *files, Work work) {
    vop::directory *tree = vop::open_directory(files);
    int status = for_pages(files, [=](off_t page) {
        for (size_t i = 1; i <= vop::pair_count(files); i++) {
            page_pair pair = vop::pair_at(files, i);
            int length = static_cast<int>(pair.key_length);
            if (vop::page_of(tree, dbm_hash(pair.key, length)) == page)
                work(pair);
        }
    });
    free(tree);
    return status;
}

// Without the NUL that ends it.
size_t text_length(const char *bytes, size_t length) {
    return length > 0 && bytes[length - 1] == '\0' ? length - 1 : length;
}

// The row being written; kept from one to the next, never released.
constinit dy row{};

void write_row(const char *key, size_t key_length, const char *text,
               size_t text_length) {
    dyreuse(&row, 128);
    vop::add_printable(&row, key, key_length);
    dyaddc(&row, '\t');
    vop::add_printable(&row, text, text_length);
    puts(row.buffer);
}

void write_line(const char *key, const char *line) {
    write_row(key, strlen(key), line, strcspn(line, "\n"));
}

page_files open_sound(const char *name) {
    page_files files = vop::open_pages(name);
    if (files.page_size == 0)
        errexit("%s: no page size (vop db check says more)", files.dir_path);
    return files;
}

int list_texts(page_files *files) {
    return for_pairs(files, [](page_pair pair) {
        write_row(pair.key, text_length(pair.key, pair.key_length), pair.value,
                  text_length(pair.value, pair.value_length));
    });
}

// Lines come by the library, key after key in the order of the pages.
int list_lines(page_files *files, const char *name) {
    ldbm_db index{};
    const char *message = ldbminit(&index, name, 3, write_line);
    if (message != nullptr) errexit("%s: %s: %s", name, message, syserr());
    int status = for_pairs(files, [&index](page_pair pair) {
        if (memchr(pair.key, '\0', pair.key_length) != nullptr)
            ldbmfind(&index, pair.key);
    });
    ldbminit(&index, nullptr, 0, nullptr);
    return status;
}

struct totals {
    long long pages;  // that hold pairs
    long long pairs;
    long long key_bytes;
    long long value_bytes;
};

int add_up(page_files *files, totals *sum) {
    return for_pages(files, [=](off_t) {
        sum->pages++;
        for (size_t i = 1; i <= vop::pair_count(files); i++) {
            page_pair pair = vop::pair_at(files, i);
            sum->pairs++;
            sum->key_bytes += static_cast<long long>(pair.key_length);
            sum->value_bytes += static_cast<long long>(pair.value_length);
        }
    });
}

void show(const char *label, long long number) {
    printf("%-20s%lld\n", label, number);
}

void show_directory(const page_files *files) {
    vop::directory *tree = vop::open_directory(files);
    long long splits = 0;
    int depth = 0;
    for (int64_t bit = 0; (bit = vop::next_set(tree, bit)) != -1; bit++) {
        splits++;
        depth = vop::depth_of(bit) + 1;
    }
    free(tree);
    show("directory bytes", files->dir_size);
    show("splits", splits);
    show("depth", depth);
}

void show_fill(const totals *sum, size_t page_size) {
    if (sum->pages == 0) return;
    long long used = sum->key_bytes + sum->value_bytes + 4 * sum->pairs;
    show("filled percent",
         100 * used / (sum->pages * static_cast<long long>(page_size)));
}

void show_data_file(const char *name, long long value_bytes) {
    char *path = tovan::suffixed(name, ".data");
    struct stat status;
    errcheck(stat(path, &status), path);
    free(path);
    show("lines", value_bytes / 4);
    show("data bytes", status.st_size);
}

}  // namespace

int vop::list_entries(char **arguments) {
    const char *name = the_name(plain_arguments(arguments, 1));
    page_files files = open_sound(name);
    int status =
        is_line_index(name) ? list_lines(&files, name) : list_texts(&files);
    close_pages(&files);
    return status;
}

int vop::show_numbers(char **arguments) {
    const char *name = the_name(plain_arguments(arguments, 1));
    page_files files = open_sound(name);
    bool is_index = is_line_index(name);
    totals sum{};
    int status = add_up(&files, &sum);
    printf("%-20s%s\n", "kind", is_index ? "line index" : "texts");
    show("page size", static_cast<long long>(files.page_size));
    show("pages with pairs", sum.pages);
    show("page file bytes", files.pag_size);
    show_directory(&files);
    show("pairs", sum.pairs);
    show("key bytes", sum.key_bytes);
    show("value bytes", sum.value_bytes);
    show_fill(&sum, files.page_size);
    if (is_index) show_data_file(name, sum.value_bytes);
    close_pages(&files);
    return status;
}
