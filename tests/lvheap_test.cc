// lvheap_test.cc: sound heaps and hostile ones.
#include "support/child.h"
#include "support/crowd.h"
#include "support/heap_image.h"
#include "support/picture.h"
#include "support/tree.h"
#include "support/variables.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <tovan/errexit.h>
#include <tovan/lvget.h>
#include <tovan/private_hash.h>
#include <tovan/private_lvheap.h>
#include <tovan/strutil.h>
#include <unistd.h>
#include <algorithm>
#include <fstream>
#include <unordered_map>

namespace {

using support::bucket_of;
using support::heap_image;

const std::string no_header = "test: variables.heap: could not read header\n";
const std::string no_magic = "test: variables.heap: header magic not valid\n";
const std::string no_heap = "test: variables.heap: could not read kivs heap\n";
const std::string damaged = "test: variables.heap: kivs heap is damaged\n";
const std::string sound;

struct image_row {
    std::string what;
    std::string bytes;
    std::string message;  // empty: the heap loads
};

int count_entry(int, int, const char *name, const char *value) {
    return static_cast<int>(strlen(name) + strlen(value));
}

// Whatever loads is also used: the sanitizers watch.
void use_heap() {
    lvwalk(0, count_entry);
    for (const char *name : {"A", "B", "X", "X[a]", ""}) {
        lvvar(name);
        lvvarmatch(1, name, "a");
    }
}

void check_rows(const std::vector<image_row> &rows) {
    for (const image_row &row : rows) {
        support::outcome end = support::in_child([&row] {
            support::load_heap(row.bytes);
            use_heap();
        });
        EXPECT_EQ(end.err, row.message) << row.what;
        EXPECT_EQ(end.exit_status, row.message == sound ? 0 : 255) << row.what;
    }
}

// A, B and C at the positions 1, 3 and 5 of 56 bytes.
heap_image three_variables() {
    heap_image image;
    image.add("A", "1");
    image.add("B", "22");
    image.add("C", "333");
    return image;
}

// One entry, "AB=xy": its bytes are 8 to 21, those of the heap 0 to 23.
heap_image one_variable() {
    heap_image image;
    image.add("AB", "xy");
    return image;
}

std::string with_head(int bucket, uint32_t position) {
    heap_image image = three_variables();
    image.heads[bucket] = position;
    return image.bytes();
}

std::string with_next(uint32_t position, uint32_t next) {
    heap_image image = three_variables();
    image.set_next(position, next);
    return image.bytes();
}

std::string with_distance(uint32_t distance) {
    heap_image image = one_variable();
    image.set_distance(1, distance);
    return image.bytes();
}

// The heap ends after `size` bytes, in fact and as the header states.
std::string ending_at(size_t size) {
    heap_image image = one_variable();
    image.heap.resize(size);
    return image.bytes();
}

TEST(lvheap, short_files_have_no_header) {
    std::string whole = three_variables().bytes();
    std::vector<image_row> rows;
    for (size_t n : {0, 1, 9, 10, 11, 12, 16, 20, 24, 27, 28, 29, 1051}) {
        rows.push_back({std::to_string(n), whole.substr(0, n), no_header});
    }
    check_rows(rows);
}

TEST(lvheap, every_byte_of_the_magic_counts) {
    std::vector<image_row> rows;
    for (size_t i = 0; i < 10; ++i) {
        heap_image image = three_variables();
        image.magic[i] = static_cast<char>(image.magic[i] ^ 1);
        rows.push_back({std::to_string(i), image.bytes(), no_magic});
    }
    check_rows(rows);
}

TEST(lvheap, heaps_shorter_than_they_state_are_refused) {
    heap_image image = three_variables();
    uint32_t size = static_cast<uint32_t>(image.heap.size());
    heap_image empty;
    empty.heap.clear();
    check_rows({
        {"one more", image.bytes_claiming(size + 1), no_heap},
        {"nothing of 1", empty.bytes_claiming(1), no_heap},
        {"nothing of 8", empty.bytes_claiming(8), no_heap},
        {"1 MB", image.bytes_claiming(1u << 20), no_heap},
        {"1 MB and 1", image.bytes_claiming((1u << 20) + 1), no_heap},
        {"2 GB - 1", image.bytes_claiming(0x7fffffff), no_heap},
        {"2 GB", image.bytes_claiming(0x80000000), no_heap},
        {"4 GB - 1", image.bytes_claiming(0xffffffff), no_heap},
    });
}

#if !defined(__SANITIZE_ADDRESS__)
TEST(lvheap, a_stated_size_alone_claims_no_memory) {
    heap_image image = three_variables();
    for (size_t size : {size_t{64}, size_t{1} << 20, size_t{5} << 20}) {
        image.heap.resize(size);
        support::outcome end = support::in_child([&image] {
            rlimit limit = {64u << 20, 64u << 20};
            setrlimit(RLIMIT_AS, &limit);
            support::load_heap(image.bytes_claiming(0xffffffff));
        });
        EXPECT_EQ(end.err, no_heap) << size;
    }
}
#endif

TEST(lvheap, positions_outside_are_refused) {
    heap_image empty;
    empty.heap.clear();
    empty.heads[7] = 1;
    heap_image unused;  // its first 8 bytes are all it has
    unused.heads[7] = 1;
    check_rows({
        {"head at the end", with_head(7, 7), damaged},
        {"head behind the end", with_head(7, 8), damaged},
        {"head far behind", with_head(7, 0x1fffffff), damaged},
        {"head that wraps to 8", with_head(7, 0x20000001), damaged},
        {"head all ones", with_head(255, 0xffffffff), damaged},
        {"next at the end", with_next(1, 7), damaged},
        {"next far behind", with_next(3, 0x7fffffff), damaged},
        {"next that wraps to 0", with_next(3, 0x20000000), damaged},
        {"next all ones", with_next(5, 0xffffffff), damaged},
        {"head into no heap", empty.bytes(), damaged},
        {"head behind the unused bytes", unused.bytes(), damaged},
    });
}

TEST(lvheap, entries_cut_by_the_end_are_refused) {
    std::vector<image_row> rows;
    for (size_t size = 0; size < 21; ++size) {
        rows.push_back({std::to_string(size), ending_at(size), damaged});
    }
    rows.push_back({"whole", ending_at(21), sound});
    check_rows(rows);
}

TEST(lvheap, chains_that_meet_an_entry_twice_are_refused) {
    heap_image tails = three_variables();
    tails.set_next(3, 1);  // B's chain runs into A's
    heap_image pair = three_variables();
    pair.set_next(1, 3);
    pair.set_next(3, 1);
    heap_image both = three_variables();
    both.heads[0] = 1;
    both.heads[1] = 1;
    check_rows({
        {"cycle of one", with_next(1, 1), damaged},
        {"cycle of two", pair.bytes(), damaged},
        {"two chains into one", tails.bytes(), damaged},
        {"two heads", both.bytes(), damaged},
    });
}

TEST(lvheap, a_cycle_of_100000_entries_is_refused) {
    heap_image image;
    for (int i = 0; i < 100000; ++i)
        image.add_to(3, "N" + std::to_string(i), "v");
    uint32_t last = image.add_to(3, "last", "v");
    image.set_next(last, 1);
    check_rows({{"large cycle", image.bytes(), damaged}});
}

TEST(lvheap, distances_that_lie_are_refused) {
    heap_image far;
    uint32_t position = far.add("AB", "xy");
    far.heap += std::string(70000, 'v') + '\0';
    heap_image reaching = far;
    far.set_distance(position, 65535);
    reaching.heap.resize(reaching.heap.size() - 1);
    reaching.set_distance(position, 65535);
    check_rows({
        {"0", with_distance(0), damaged},
        {"smaller than the name", with_distance(1), damaged},
        {"the name's length", with_distance(2), damaged},
        {"as written", with_distance(3), sound},
        {"into the value", with_distance(4), sound},
        {"the value's end", with_distance(5), sound},
        {"the padding", with_distance(8), sound},
        {"the end of the heap", with_distance(9), damaged},
        {"behind the end", with_distance(10), damaged},
        {"65535 outside", with_distance(65535), damaged},
        {"65535 inside", far.bytes(), sound},
        {"65535 inside, without end", reaching.bytes(), damaged},
    });
}

TEST(lvheap, texts_without_end_are_refused) {
    heap_image name = one_variable();
    name.heap.replace(15, 9, "ABxyABxyA");
    heap_image value = one_variable();
    value.heap.replace(18, 6, "xyxyxy");
    check_rows({
        {"name", name.bytes(), damaged},
        {"value", value.bytes(), damaged},
    });
}

TEST(lvheap, odd_but_sound_heaps_load) {
    heap_image empty;
    empty.heap.clear();
    heap_image shared;  // two entries, one value
    shared.add("A", "");
    shared.add("B", "value");
    shared.set_distance(1, 18);
    check_rows({
        {"no heap at all", empty.bytes(), sound},
        {"only the unused bytes", heap_image{}.bytes(), sound},
        {"bytes behind the heap", three_variables().bytes() + "rest", sound},
        {"an empty name", support::heap_of({{"", "v"}}), sound},
        {"an equals sign", support::heap_of({{"A=B", "v"}}), sound},
        {"a shared value", shared.bytes(), sound},
        {"a long name", support::heap_of({{std::string(65534, 'n'), "v"}}),
         sound},
        {"brackets",
         support::heap_of({{"[", "v"},
                           {"X[", "v"},
                           {"X]", "v"},
                           {"X[a", "v"},
                           {"X[a]b", "v"},
                           {"X[a]]", "v"},
                           {"X[[a]]", "v"},
                           {"[X]", "v"},
                           {"[[[[", "v"},
                           {"X[]", "v"}}),
         sound},
    });
}

TEST(lvheap, fields_that_readers_ignore_may_hold_anything) {
    std::string bytes = three_variables().bytes();
    bytes.replace(10, 2, "\xff\xff");
    bytes.replace(24, 4, "\xff\xff\xff\xff");
    bytes.replace(heap_image::header_size, 8,
                  "\xff\xff\xff\xff\xff\xff\xff\xff");
    support::load_heap(bytes);
    EXPECT_STREQ(lvvar("B"), "22");
}

TEST(lvheap, what_cannot_be_exported_is_fatal) {
    check_rows({
        {"equals sign", support::heap_of({{"A=B", "v", 2}}),
         "test: export of kivs A=B failed\n"},
        {"no name", support::heap_of({{"", "v", 2}}),
         "test: export of kivs  failed\n"},
    });
}

TEST(lvheap, patterns_with_six_braces_match_nothing) {
    std::string deep = "X[{{{{{{a}}}}}}]";
    support::load_variables({{deep, "deep"}, {"X", "plain"}});
    std::string text = support::stderr_of(
        [] { EXPECT_STREQ(lvvarmatch(1, "X", "a"), "plain"); });
    EXPECT_EQ(text, "{} nesting too deep in {{{{{{a}}}}}}]\n");
}

// Names of one chain: the first bytes are free, the last one leads to 0.
std::string colliding_name(int i) {
    std::string name = "N" + std::to_string(i) + "_";
    int h = bucket_of(name);
    for (int c = 1; c < 256; ++c) {
        if (lvhshtab[h ^ c] == 0) return name + static_cast<char>(c);
    }
    return colliding_name(i + 1000000);  // its last byte would be NUL
}

TEST(lvheap, a_chain_of_100000_is_searched_at_once) {
    heap_image image;
    for (int i = 0; i < 100000; ++i)
        image.add(colliding_name(i), std::to_string(i));
    EXPECT_NE(image.heads[0], 0u);
    for (int h = 1; h < 256; ++h)
        ASSERT_EQ(image.heads[h], 0u);
    support::load_heap(image.bytes());
    for (int i = 0; i < 100000; ++i)
        ASSERT_EQ(lvvar(colliding_name(i).c_str()), std::to_string(i));
}

TEST(lvheap, a_name_that_occurs_100000_times_has_its_first_value) {
    heap_image image;
    for (int i = 0; i < 100000; ++i)
        image.add("SAME", std::to_string(i));
    for (int i = 0; i < 100000; ++i)
        image.add("SAME[*]", std::to_string(i));
    support::load_heap(image.bytes());
    EXPECT_STREQ(lvvar("SAME"), "0");
    EXPECT_STREQ(lvvarmatch(0, "SAME", "x"), "0");
}

TEST(lvheap, an_entry_in_a_foreign_chain_is_walked_but_not_found) {
    heap_image image;
    int own = bucket_of("FOUND");
    image.add_to((own + 1) % 256, "FOUND", "foreign");
    image.add_to((own + 2) % 256, "LOST", "foreign");
    image.add("FOUND", "own");
    support::load_heap(image.bytes());
    EXPECT_STREQ(lvvar("FOUND"), "own");
    EXPECT_EQ(lvvar("LOST"), nullptr);
    EXPECT_STREQ(lvvarmatch(1, "LOST", "x"), "foreign");
}

bool has_zero_byte(uint32_t position) {
    for (int shift = 0; shift < 32; shift += 8) {
        if ((position >> shift & 0xff) == 0) return true;
    }
    return false;
}

// From 0x01010101 on positions have no zero byte that would end a name: here
// each of thousands of entries takes all those behind it for its name. What
// lies before them is a hole in the file.
TEST(lvheap, names_over_each_other_are_refused) {
    constexpr uint32_t first = 0x01010101;
    constexpr uint32_t entries = 8100;
    std::string run(entries * 8, 'n');
    uint32_t position = first;
    while (position < first + entries) {
        uint32_t next = position + 1;
        while (has_zero_byte(next))
            ++next;
        if (next >= first + entries) next = 0;
        std::string entry;
        for (int shift = 24; shift >= 0; shift -= 8)
            entry += static_cast<char>(next >> shift);
        run.replace((position - first) * 8, 8, entry + "\xff\xff\x01n");
        if (next == 0) break;
        position = next;
    }
    run += '\0' + std::string(70000, 'v') + '\0';
    heap_image image;
    image.heads[0] = first;
    image.heap.clear();
    auto size = static_cast<uint32_t>(size_t{first} * 8 + run.size());
    support::write_file("variables.heap", image.bytes_claiming(size));
    ASSERT_EQ(truncate("variables.heap", 1052 + off_t{first} * 8), 0);
    std::ofstream("variables.heap", std::ios::app) << run;
    EXPECT_FATAL(lvget(0, nullptr, 0, "variables.heap", nullptr), 255, damaged);
}

// A name of the heap and a longer one with the same tag.
std::pair<std::string, std::string> equal_tags() {
    constexpr int tries = 1 << 18;
    std::unordered_map<uint32_t, std::string> by_tag;
    for (int i = 0; i < tries; ++i) {
        std::string name = std::to_string(i);
        by_tag[tovan::text_tag(name.data(), name.size())] = name;
    }
    std::string longer(60, 'n');
    for (int i = 0; i < tries; ++i) {
        std::string name = longer + std::to_string(i);
        auto found = by_tag.find(tovan::text_tag(name.data(), name.size()));
        if (found != by_tag.end()) return {found->second, name};
    }
    return {};
}

TEST(lvheap, names_with_equal_tags_are_told_apart) {
    auto [name, other] = equal_tags();
    ASSERT_FALSE(name.empty());
    support::load_variables({{name, "short"}});  // near the heap's end
    EXPECT_STREQ(lvvar(name.c_str()), "short");
    EXPECT_EQ(lvvar(other.c_str()), nullptr);
    support::load_variables({{name, "short"}, {other, "long"}});
    EXPECT_STREQ(lvvar(name.c_str()), "short");
    EXPECT_STREQ(lvvar(other.c_str()), "long");
    support::load_variables({{name + "[*]", "short"}, {other + "[*]", "long"}});
    EXPECT_STREQ(lvvarmatch(0, name.c_str(), "x"), "short");
    EXPECT_STREQ(lvvarmatch(0, other.c_str(), "x"), "long");
}

// Loads and looks up; each text is compared with few others.
void check_crowd(const std::vector<std::string> &names) {
    std::vector<support::variable> variables;
    for (const std::string &name : names) {
        variables.push_back({name, "v" + name});
        variables.push_back({name + "[a*]", "s" + name});
        variables.push_back({name, "again"});
    }
    std::string bytes = support::heap_of(variables);
    tovan::other_comparisons = 0;
    support::load_heap(bytes);
    for (const std::string &name : names) {
        EXPECT_EQ(lvvar(name.c_str()), "v" + name);
        EXPECT_EQ(lvvarmatch(0, name.c_str(), "ab"), "s" + name);
        EXPECT_EQ(lvvarmatch(1, name.c_str(), "b"), "v" + name);
        EXPECT_EQ(lvvar((name + "?").c_str()), nullptr);
    }
    EXPECT_GT(tovan::other_comparisons, names.size());
    EXPECT_LT(tovan::other_comparisons, names.size() * 10 * 2 * 17);
}

TEST(lvheap, a_hundred_thousand_names_with_one_tag) {
    check_crowd(support::equal_tags(100000));
    support::load_variables({{"A", "1"}});
    EXPECT_EQ(lvvar(support::equal_tags(80)[79].c_str()), nullptr);
}

TEST(lvheap, names_with_one_place) {
    check_crowd(support::equal_places(500));
}

TEST(lvheap, texts_of_all_lengths_have_tags_of_their_own) {
    std::string text = "abcdefghijklmnopqrstuvwxyz";
    std::vector<uint32_t> tags;
    for (size_t n = 0; n <= text.size(); ++n)
        tags.push_back(tovan::text_tag(text.data(), n));
    for (size_t i = 0; i < text.size(); ++i) {
        std::string other = text;
        other[i] = 'A';
        for (size_t n = i + 1; n <= text.size(); ++n)
            tags.push_back(tovan::text_tag(other.data(), n));
    }
    std::sort(tags.begin(), tags.end());
    EXPECT_EQ(std::adjacent_find(tags.begin(), tags.end()), tags.end());
}

TEST(lvheap, the_documented_example_is_a_heap) {
    std::string bytes = support::pictured_bytes("docs/formats/heap.md");
    heap_image image;
    image.generation_seek = 35;
    image.generation_lines = 3;
    image.add("CC", "gcc");
    image.add("LANG", "C", 2);
    image.add("X[a*]", "1");
    EXPECT_EQ(bytes, image.bytes());
    support::load_heap(bytes);
    EXPECT_STREQ(lvvar("CC"), "gcc");
    EXPECT_STREQ(getenv("LANG"), "C");
    EXPECT_STREQ(lvvarmatch(0, "X", "abc"), "1");
    EXPECT_EQ(lvgenseek(), 35u);
    EXPECT_EQ(lvgen_lc(), 3u);
}

TEST(lvhshtab, is_a_permutation_with_the_known_corners) {
    std::vector<int> values(lvhshtab, lvhshtab + 256);
    EXPECT_EQ(values[0], 0x0f);
    EXPECT_EQ(values[15], 0x7b);
    EXPECT_EQ(values[16], 0x27);
    EXPECT_EQ(values[128], 0xed);
    EXPECT_EQ(values[240], 0x36);
    EXPECT_EQ(values[255], 0xc5);
    std::sort(values.begin(), values.end());
    for (int i = 0; i < 256; ++i)
        EXPECT_EQ(values[static_cast<size_t>(i)], i);
    EXPECT_EQ(strhash("", nullptr, lvhshtab), 0);
    EXPECT_EQ(strhash("A", nullptr, lvhshtab), 0x12);
    EXPECT_EQ(strhash("AB", nullptr, lvhshtab), 0x61);
}

#if !defined(__SANITIZE_ADDRESS__)
int allocations = 0;

int allocations_of_load(int count) {
    std::vector<support::variable> variables;
    for (int i = 0; i < count; ++i)
        variables.push_back({"N" + std::to_string(i) + "[x]", "v"});
    support::write_file("counted", support::heap_of(variables));
    static tovan::variable_heap heap;
    FILE *file = fopen("counted", "r");
    allocations = 0;
    tovan::read_heap(&heap, fileno(file), "counted");
    tovan::index_heap(&heap, "counted");
    int counted = allocations;
    fclose(file);
    return counted;
}

TEST(lvheap, allocations_do_not_grow_with_the_entries) {
    int few = allocations_of_load(10);
    EXPECT_GT(few, 0);
    EXPECT_LE(few, 8);
    EXPECT_EQ(allocations_of_load(20000), few);
    EXPECT_LE(allocations_of_load(200000), few + 3);  // 8 MB in pieces
}
#endif

}  // namespace

#if !defined(__SANITIZE_ADDRESS__)
// The C library's own allocator, counted.
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);

void *malloc(size_t size) {
    ++allocations;
    return __libc_malloc(size);
}

void *calloc(size_t count, size_t size) {
    ++allocations;
    return __libc_calloc(count, size);
}

void *realloc(void *block, size_t size) {
    ++allocations;
    return __libc_realloc(block, size);
}
}
#endif
