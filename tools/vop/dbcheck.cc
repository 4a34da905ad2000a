// dbcheck.cc: what is wrong in the files of a keyed database.
#include "vop/db.h"

#include "vop/dbpages.h"
#include "vop/dbtree.h"

#include "shared/manners.h"
#include "shared/options.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/chkalloc.h>
#include <tovan/ddbm.h>
#include <tovan/private_keyed.h>
#include <tovan/usage.h>
#include <unistd.h>

using vop::page_files;
using vop::page_pair;

namespace {

constexpr int most_faults = 100;
constexpr size_t shown_bytes = 40;  // of a key in a message
constexpr size_t offset_size = 4;   // of a line

// A database that is being checked.
struct inspection {
    const char *name;
    page_files files;
    vop::directory *tree;
    bool any_bytes;   // keys and values need not be strings
    char *data_path;  // of a line index, else null
    int data;
    off_t data_size;
    long long page;  // the one that is in the buffer
    long long pages;
    long long pairs;
    int faults;
};

[[noreturn]] void finish_check(const inspection *run) {
    printf("%s: pages %lld, pairs %lld, faults %d\n", run->name, run->pages,
           run->pairs, run->faults);
    tools::finish(run->faults == 0 ? 0 : 1);
}

// Writes "FILE: fault".
[[gnu::format(printf, 3, 4)]] void report(inspection *run, const char *path,
                                          const char *format, ...) {
    printf("%s: ", path);
    va_list arguments;
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
    putchar('\n');
    if (++run->faults < most_faults) return;
    printf("%s: the rest is not looked at\n", run->name);
    finish_check(run);
}

// "page 3: pair 1 `key'", until the next call.
const char *pair_name(const inspection *run, size_t number) {
    static dy text{};
    page_pair pair = vop::pair_at(&run->files, number);
    size_t length = strnlen(pair.key, pair.key_length);
    bool is_long = length > shown_bytes;
    char place[64];
    snprintf(place, sizeof place, "page %lld: pair %zu `", run->page, number);
    dyreuse(&text, 128);
    dystr(&text, place);
    vop::add_printable(&text, pair.key, is_long ? shown_bytes : length);
    return dystr(&text, is_long ? "...'" : "'");
}

void check_directory_file(inspection *run) {
    const page_files *files = &run->files;
    if (files->page_size == 0) {
        report(run, files->dir_path,
               files->dir_size == 0 ? "empty: no page size" : "page size 0");
        finish_check(run);
    }
    if (files->dir_size != 1 && files->dir_size % vop::directory_block != 0)
        report(run, files->dir_path,
               "%lld bytes, neither 1 nor a multiple of 4096",
               static_cast<long long>(files->dir_size));
}

void check_split(inspection *run, int64_t bit) {
    const page_files *files = &run->files;
    auto number = static_cast<long long>(bit);
    if (bit > 0 && !vop::is_set(run->tree, (bit - 1) / 2)) {
        report(run, files->dir_path,
               "bit %lld is set, and bit %lld above it is not", number,
               (number - 1) / 2);
        return;
    }
    long long new_half = vop::split_page(bit) | (1LL << vop::depth_of(bit));
    if (new_half * static_cast<long long>(files->page_size) < files->pag_size)
        return;
    report(run, files->dir_path,
           "bit %lld is set, and page %lld is behind the end of %s", number,
           new_half, files->pag_path);
}

// One key is there twice when it follows itself in sorted order.
struct sorted_key {
    page_pair pair;
    size_t number;
};

int compare_keys(const void *a, const void *b) {
    auto *one = static_cast<const sorted_key *>(a);
    auto *other = static_cast<const sorted_key *>(b);
    size_t length = one->pair.key_length;
    if (length != other->pair.key_length)
        return length < other->pair.key_length ? -1 : 1;
    int order = memcmp(one->pair.key, other->pair.key, length);
    if (order != 0) return order;
    return one->number < other->number ? -1 : 1;
}

bool is_same_key(const sorted_key *one, const sorted_key *other) {
    return one->pair.key_length == other->pair.key_length &&
           memcmp(one->pair.key, other->pair.key, one->pair.key_length) == 0;
}

void check_unique_keys(inspection *run) {
    size_t count = vop::pair_count(&run->files);
    auto *keys =
        static_cast<sorted_key *>(chkalloc(count * sizeof(sorted_key)));
    for (size_t i = 0; i < count; i++)
        keys[i] = {vop::pair_at(&run->files, i + 1), i + 1};
    qsort(keys, count, sizeof(sorted_key), compare_keys);
    for (size_t i = 1; i < count; i++) {
        if (!is_same_key(&keys[i - 1], &keys[i])) continue;
        report(run, run->files.pag_path, "%s: its key is that of pair %zu",
               pair_name(run, keys[i].number), keys[i - 1].number);
    }
    free(keys);
}

bool is_string(const char *bytes, size_t length) {
    return strnlen(bytes, length) + 1 == length;
}

// Where a line's file has a newline, a line starts behind it.
bool starts_line(const inspection *run, off_t offset) {
    char before = '\n';
    return offset == 0 ||
           (pread(run->data, &before, 1, offset - 1) == 1 && before == '\n');
}

off_t offset_at(const char *bytes) {
    off_t offset = 0;
    for (size_t i = 0; i < offset_size; i++)
        offset = offset << 8 | static_cast<unsigned char>(bytes[i]);
    return offset;
}

void check_lines(inspection *run, size_t number, const page_pair *pair) {
    if (pair->value_length % offset_size != 0)
        report(run, run->files.pag_path,
               "%s: %zu bytes of offsets, not a multiple of 4",
               pair_name(run, number), pair->value_length);
    for (size_t i = 0; i < pair->value_length / offset_size; i++) {
        off_t offset = offset_at(pair->value + i * offset_size);
        if (offset < run->data_size && starts_line(run, offset)) continue;
        report(run, run->files.pag_path, "%s: line %zu, offset %lld, %s %s",
               pair_name(run, number), i + 1, static_cast<long long>(offset),
               offset < run->data_size ? "is no start of a line in"
                                       : "is behind the end of",
               run->data_path);
    }
}

void check_strings(inspection *run, size_t number, const page_pair *pair) {
    if (!is_string(pair->key, pair->key_length))
        report(run, run->files.pag_path,
               "%s: its key is not ended by its only NUL",
               pair_name(run, number));
    if (run->data_path != nullptr) {
        check_lines(run, number, pair);
    } else if (!is_string(pair->value, pair->value_length)) {
        report(run, run->files.pag_path,
               "%s: its text is not ended by its only NUL",
               pair_name(run, number));
    }
}

void check_pair(inspection *run, size_t number) {
    page_pair pair = vop::pair_at(&run->files, number);
    if (pair.key_length == 0) {
        report(run, run->files.pag_path, "%s: its key is empty",
               pair_name(run, number));
        return;
    }
    int length = static_cast<int>(pair.key_length);
    long long place = vop::page_of(run->tree, dbm_hash(pair.key, length));
    if (place != run->page)
        report(run, run->files.pag_path, "%s: it belongs on page %lld",
               pair_name(run, number), place);
    if (!run->any_bytes) check_strings(run, number, &pair);
}

void check_page(inspection *run) {
    const page_files *files = &run->files;
    if (files->held < files->page_size)
        report(run, files->pag_path,
               "page %lld: cut off after %zu of %zu bytes", run->page,
               files->held, files->page_size);
    dy flaw;
    dynew(&flaw, 0);
    if (!vop::is_valid_page(files, &flaw)) {
        report(run, files->pag_path, "page %lld: %s", run->page, flaw.buffer);
        free(flaw.buffer);
        return;
    }
    free(flaw.buffer);
    for (size_t i = 1; i <= vop::pair_count(files); i++)
        check_pair(run, i);
    check_unique_keys(run);
    run->pages++;
    run->pairs += static_cast<long long>(vop::pair_count(files));
}

void open_data_file(inspection *run) {
    if (run->any_bytes || !vop::is_line_index(run->name)) return;
    run->data_path = tovan::suffixed(run->name, ".data");
    run->data = vop::open_part(run->data_path, &run->data_size);
}

void close_all(inspection *run) {
    if (run->data_path != nullptr) close(run->data);
    free(run->data_path);
    free(run->tree);
    vop::close_pages(&run->files);
}

}  // namespace

int vop::check_database(char **arguments) {
    inspection run{};
    tools::options flags = tools::options_of(arguments);
    while (tools::next_flag(&flags, "b", nullptr) != 0)
        run.any_bytes = true;
    run.name = the_name(flags.next);
    run.files = open_pages(run.name);
    open_data_file(&run);
    check_directory_file(&run);
    run.tree = open_directory(&run.files);
    for (int64_t bit = 0; (bit = next_set(run.tree, bit)) != -1; bit++)
        check_split(&run, bit);
    for (; (run.page = read_page_from(&run.files, run.page)) != -1; run.page++)
        check_page(&run);
    close_all(&run);
    finish_check(&run);
}
