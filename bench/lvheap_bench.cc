// lvheap_bench.cc: loading a heap and looking variables up.
//
// ours     the library's own loader and index
// chains   the chains of the format, walked as they are
// The other variants hold the same names in what a program would otherwise
// take; "read" is the file's bytes alone, "walk" one visit of every entry.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <tovan/fmatch.h>
#include <tovan/lvget.h>
#include <tovan/lvheap.h>
#include <tovan/private_lvheap.h>
#include <tovan/strutil.h>
#include <unistd.h>
#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>
#ifdef TOVAN_PEER_GLIB
#include <glib.h>
#endif

namespace {

struct variable {
    std::string name;
    std::string value;
};

// Names as trees have them: words, some with a subscript. One base name in
// ten has four patterns.
std::vector<variable> make_variables(size_t count) {
    static const char *const words[] = {"Src",  "Obj",  "Lib",  "Flags",
                                        "Root", "Type", "Tune", "Path",
                                        "Dir",  "Name"};
    static const char *const patterns[] = {"[*]", "[x86*]", "[x86_64]",
                                           "[arm*]"};
    std::mt19937 random(42);
    std::vector<variable> all;
    for (size_t i = 0; all.size() < count; ++i) {
        std::string name = words[random() % 10];
        name += words[random() % 10] + std::to_string(i);
        std::string value(5 + random() % 30, 'v');
        all.push_back({name, value});
        for (const char *pattern : patterns) {
            if (i % 10 == 0 && all.size() < count)
                all.push_back({name + pattern, value});
        }
    }
    return all;
}

void put32(std::string *bytes, size_t at, size_t value) {
    for (size_t i = 0; i < 4; ++i)
        (*bytes)[at + i] = static_cast<char>(value >> (24 - 8 * i));
}

// The file, with the chains in the order of the variables.
std::string make_image(const std::vector<variable> &variables) {
    std::string image(1052 + 8, '\0');
    memcpy(image.data(), "LclVars3\n", 10);
    size_t links[256];
    for (size_t h = 0; h < 256; ++h)
        links[h] = 28 + 4 * h;
    for (const variable &v : variables) {
        auto h =
            static_cast<size_t>(strhash(v.name.c_str(), nullptr, lvhshtab));
        size_t at = image.size();
        put32(&image, links[h], (at - 1052) / 8);
        links[h] = at;
        image.append(7, '\0');
        image[at + 4] = static_cast<char>((v.name.size() + 1) >> 8);
        image[at + 5] = static_cast<char>(v.name.size() + 1);
        image.append(v.name).append(1, '\0');
        image.append(v.value).append(1, '\0');
        image.resize((image.size() - 1052 + 7) / 8 * 8 + 1052);
    }
    put32(&image, 20, image.size() - 1052);
    return image;
}

// The heap of so many variables, as a file and loaded, and the names in
// random order.
struct prepared {
    std::vector<variable> variables;
    std::string path;
    std::vector<std::string> names;
    tovan::variable_heap heap{};
};

prepared *prepare(size_t count) {
    static std::map<size_t, prepared *> kept;
    prepared *&p = kept[count];
    if (p != nullptr) return p;
    p = new prepared;
    p->variables = make_variables(count);
    p->path = "/tmp/lvheap_bench." + std::to_string(getpid());
    std::string image = make_image(p->variables);
    FILE *file = fopen(p->path.c_str(), "w");
    fwrite(image.data(), 1, image.size(), file);
    fclose(file);
    int descriptor = open(p->path.c_str(), O_RDONLY);
    unlink(p->path.c_str());
    p->path = "/proc/self/fd/" + std::to_string(descriptor);
    for (const variable &v : p->variables)
        p->names.push_back(v.name);
    std::shuffle(p->names.begin(), p->names.end(), std::mt19937(7));
    int again = open(p->path.c_str(), O_RDONLY);
    tovan::read_heap(&p->heap, again, "heap");
    tovan::index_heap(&p->heap, "heap");
    close(again);
    return p;
}

template <typename Find>
void look_up(benchmark::State &state, size_t count, Find find) {
    prepared *p = prepare(count);
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(find(p, p->names[i]));
        if (++i == p->names.size()) i = 0;
    }
}

const char *walk_chain(const tovan::variable_heap *heap, const char *name) {
    int h = strhash(name, nullptr, lvhshtab);
    uint32_t position = heap->heads[h];
    while (position != 0) {
        const tovan::heap_entry *entry = tovan::entry_at(heap, position);
        if (strcmp(tovan::entry_name(entry), name) == 0)
            return tovan::entry_value(entry);
        position = tovan::next_position(entry);
    }
    return nullptr;
}

void find_ours(benchmark::State &state, size_t count) {
    look_up(state, count, [](prepared *p, const std::string &name) {
        return tovan::entry_value(tovan::find_entry(&p->heap, name.c_str()));
    });
}

void find_chains(benchmark::State &state, size_t count) {
    look_up(state, count, [](prepared *p, const std::string &name) {
        return walk_chain(&p->heap, name.c_str());
    });
}

using string_table = std::unordered_map<std::string, std::string>;
using string_tree = std::map<std::string, std::string>;

template <typename Table>
Table *table_of(prepared *p) {
    static std::map<prepared *, Table *> kept;
    Table *&table = kept[p];
    if (table != nullptr) return table;
    table = new Table;
    for (const variable &v : p->variables)
        table->emplace(v.name, v.value);
    return table;
}

// A tool hands a C string to every one of them.
template <typename Table>
void find_in(benchmark::State &state, size_t count) {
    Table *table = table_of<Table>(prepare(count));
    look_up(state, count, [table](prepared *, const std::string &name) {
        return table->find(name.c_str())->second.c_str();
    });
}

// The keys are there as std::string already.
template <typename Table>
void find_ready(benchmark::State &state, size_t count) {
    Table *table = table_of<Table>(prepare(count));
    look_up(state, count, [table](prepared *, const std::string &name) {
        return table->find(name)->second.c_str();
    });
}

#ifdef TOVAN_PEER_GLIB
void find_glib(benchmark::State &state, size_t count) {
    prepared *p = prepare(count);
    GHashTable *table = g_hash_table_new(g_str_hash, g_str_equal);
    for (const variable &v : p->variables)
        g_hash_table_insert(table, const_cast<char *>(v.name.c_str()),
                            const_cast<char *>(v.value.c_str()));
    look_up(state, count, [table](prepared *, const std::string &name) {
        return g_hash_table_lookup(table, name.c_str());
    });
    g_hash_table_destroy(table);
}
#endif

// ---- loading -----------------------------------------------------------

std::string read_whole(const std::string &path) {
    int descriptor = open(path.c_str(), O_RDONLY);
    auto size = static_cast<size_t>(lseek(descriptor, 0, SEEK_END));
    lseek(descriptor, 0, SEEK_SET);
    std::string bytes(size, '\0');
    if (read(descriptor, bytes.data(), size) < 0) perror("read");
    close(descriptor);
    return bytes;
}

void load_ours(benchmark::State &state, size_t count) {
    prepared *p = prepare(count);
    for (auto _ : state) {
        tovan::variable_heap heap{};
        int descriptor = open(p->path.c_str(), O_RDONLY);
        tovan::read_heap(&heap, descriptor, "heap");
        tovan::index_heap(&heap, "heap");
        close(descriptor);
        tovan::free_heap(&heap);
    }
}

void load_read(benchmark::State &state, size_t count) {
    prepared *p = prepare(count);
    for (auto _ : state)
        benchmark::DoNotOptimize(read_whole(p->path));
}

// A heap that is read and no more.
tovan::variable_heap read_from(const std::string &path) {
    tovan::variable_heap heap{};
    int descriptor = open(path.c_str(), O_RDONLY);
    tovan::read_heap(&heap, descriptor, "heap");
    close(descriptor);
    return heap;
}

// The file read, and every entry visited once.
void load_read_walk(benchmark::State &state, size_t count) {
    prepared *p = prepare(count);
    for (auto _ : state) {
        tovan::variable_heap heap = read_from(p->path);
        size_t lengths = 0;
        tovan::for_each_entry(&heap, [&](int, const tovan::heap_entry *e) {
            lengths +=
                strlen(tovan::entry_name(e)) + strlen(tovan::entry_value(e));
        });
        benchmark::DoNotOptimize(lengths);
        tovan::free_heap(&heap);
    }
}

template <typename Table>
void load_into(benchmark::State &state, size_t count) {
    prepared *p = prepare(count);
    for (auto _ : state) {
        tovan::variable_heap heap = read_from(p->path);
        Table table;
        tovan::for_each_entry(&heap, [&](int, const tovan::heap_entry *e) {
            table.emplace(tovan::entry_name(e), tovan::entry_value(e));
        });
        benchmark::DoNotOptimize(table);
        tovan::free_heap(&heap);
    }
}

#ifdef TOVAN_PEER_GLIB
void load_glib(benchmark::State &state, size_t count) {
    prepared *p = prepare(count);
    for (auto _ : state) {
        tovan::variable_heap heap = read_from(p->path);
        GHashTable *table = g_hash_table_new(g_str_hash, g_str_equal);
        tovan::for_each_entry(&heap, [&](int, const tovan::heap_entry *e) {
            g_hash_table_insert(table, const_cast<char *>(tovan::entry_name(e)),
                                const_cast<char *>(tovan::entry_value(e)));
        });
        g_hash_table_destroy(table);
        tovan::free_heap(&heap);
    }
}
#endif

// ---- by name and subscript ---------------------------------------------

// Base names that have patterns, in random order.
std::vector<std::string> bases_of(const prepared *p) {
    std::vector<std::string> bases;
    for (const std::string &name : p->names) {
        if (name.ends_with("[*]"))
            bases.push_back(name.substr(0, name.find('[')));
    }
    return bases;
}

void match_ours(benchmark::State &state, size_t count) {
    prepared *p = prepare(count);
    lvget(0, nullptr, 1, p->path.c_str(), nullptr);
    std::vector<std::string> bases = bases_of(p);
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(lvvarmatch(0, bases[i].c_str(), "x86_32"));
        if (++i == bases.size()) i = 0;
    }
}

// The scan over all entries that the index replaces.
void match_scan(benchmark::State &state, size_t count) {
    prepared *p = prepare(count);
    std::vector<std::string> bases = bases_of(p);
    size_t i = 0;
    for (auto _ : state) {
        const std::string &base = bases[i];
        const char *held = nullptr;
        size_t longest = 0;
        tovan::for_each_entry(&p->heap, [&](int, const tovan::heap_entry *e) {
            const char *name = tovan::entry_name(e);
            if (strncmp(name, base.c_str(), base.size()) != 0) return;
            const char *rest = name + base.size();
            if (*rest != '[' || fmatch("x86_32]", rest + 1) == 0) return;
            if (strlen(rest) <= longest) return;
            longest = strlen(rest);
            held = tovan::entry_value(e);
        });
        benchmark::DoNotOptimize(held);
        if (++i == bases.size()) i = 0;
    }
}

// ---- the table ---------------------------------------------------------

struct job {
    const char *what;
    const char *who;
    void (*run)(benchmark::State &state, size_t count);
};

constexpr job jobs[] = {
    {"find", "ours", find_ours},
    {"find", "unordered_map", find_ready<string_table>},
    {"find", "unordered_map_of_c_string", find_in<string_table>},
    {"find", "map", find_ready<string_tree>},
#ifdef TOVAN_PEER_GLIB
    {"find", "GHashTable", find_glib},
#endif
    {"find", "chains", find_chains},
    {"match", "ours", match_ours},
    {"match", "scan", match_scan},
    {"load", "ours", load_ours},
    {"load", "unordered_map", load_into<string_table>},
    {"load", "map", load_into<string_tree>},
#ifdef TOVAN_PEER_GLIB
    {"load", "GHashTable", load_glib},
#endif
    {"load", "read", load_read},
    {"load", "read_and_walk", load_read_walk},
};

void add(const std::string &name, const job &j, size_t count) {
    benchmark::RegisterBenchmark(
        name.c_str(), [j, count](benchmark::State &s) { j.run(s, count); });
}

}  // namespace

int main(int argc, char **argv) {
    for (size_t count : {size_t{2000}, size_t{100000}}) {
        std::string size = count == 2000 ? "_2k/" : "_100k/";
        for (const job &j : jobs)
            add("e/" + (j.what + size) + j.who, j, count);
    }
    for (const job &j :
         {job{"find", "", find_ours}, job{"match", "", match_ours},
          job{"load", "", load_ours}}) {
        for (size_t count = 100; count <= 1000000; count *= 10)
            add("law/" + (j.what + ("/" + std::to_string(count))), j, count);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
