// map_root_test.cc: root maps, on a host of the test's own.
#include "support/child.h"
#include "support/crowd.h"
#include "support/doc.h"
#include "support/tree.h"

#include <dlfcn.h>
#include <errno.h>
#include <gtest/gtest.h>
#include <string.h>
#include <sys/utsname.h>
#include <tovan/chkalloc.h>
#include <tovan/dospath.h>
#include <tovan/map_root.h>
#include <unistd.h>

namespace {

std::string host_name = "mill";
int host_questions = 0;
int system_questions = 0;
bool fdopen_fails = false;

}  // namespace

extern "C" {

int gethostname(char *name, size_t) noexcept {
    ++host_questions;
    strcpy(name, host_name.c_str());
    return 0;
}

int uname(struct utsname *host) noexcept {
    ++system_questions;
    *host = {};
    strcpy(host->sysname, "Unix");
    strcpy(host->release, "2");
    strcpy(host->machine, "pdp11");
    return 0;
}

FILE *fdopen(int descriptor, const char *mode) noexcept {
    if (fdopen_fails) {
        errno = ENOMEM;
        return nullptr;
    }
    using opener = FILE *(*)(int, const char *);
    static auto real = reinterpret_cast<opener>(dlsym(RTLD_NEXT, "fdopen"));
    return real(descriptor, mode);
}

}  // extern "C"

namespace {

const char system_file[] = "morva/data/roots.map";
const char user_file[] = ".morva/roots.map";
const char other_user_file[] = ".morva/maproots";

std::string mapped(const std::string &path) {
    dy output;
    dynew(&output, 0);
    dystr(&output, "[");
    map_root(path.c_str(), &output);
    std::string result = output.buffer;
    free(output.buffer);
    return result.substr(1);
}

std::string letters("?DPMU");

// The records as "type from to", one a line; checks each and the end.
std::string records() {
    std::string all;
    const maprec *record = load_rootmaps();
    for (; record->from != nullptr; ++record) {
        EXPECT_EQ(static_cast<size_t>(record->fromlen), strlen(record->from));
        all += letters[static_cast<size_t>(record->type)];
        all += std::string(" ") + record->from + " " + record->to + "\n";
    }
    EXPECT_EQ(record->type, 0);
    EXPECT_EQ(record->fromlen, 0);
    EXPECT_EQ(record->to, nullptr);
    return all;
}

std::string loaded(const std::string &content) {
    support::write_file(system_file, content);
    return records();
}

void add(int type, const std::string &from, const std::string &to) {
    add_map(type, savestr(from.c_str()), static_cast<int>(from.size()),
            savestr(to.c_str()));
}

TEST(map_root, map_root_rows) {
    support::write_file(system_file,
                        "/u /net/u\n"
                        "/u/src /never\n"
                        "rel there\n"
                        "/ /root\n"
                        "/d/ /dd\n"
                        "D> /drive d:\n"
                        "P> /p /pp\n"
                        "U> /unix /uu\n"
                        "M> /m /mm\n");
    const char *const rows[][2] = {
        {"/u/src", "/net/u/src"},
        {"/u", "/net/u"},
        {"/u/", "/net/u/"},
        {"/usr", "/usr"},
        {"/u//x", "/net/u//x"},
        {"/", "/root"},
        {"//x", "/root/x"},
        {"/d/x", "/d/x"},
        {"/d//x", "/dd/x"},
        {"/d/", "/dd"},
        {"rel/x", "there/x"},
        {"relative", "relative"},
        {"", ""},
        {"/drive/x", "/drive/x"},
        {"/p/x", "/p/x"},
        {"/unix/x", "/unix/x"},
        {"/m/x", "/mm/x"},
        {"/M/x", "/M/x"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(mapped(row[0]), row[1]) << row[0];
}

TEST(map_root, first_record_wins_not_the_longest) {
    support::write_file(system_file, "/a/b /first\n/a /short\n/a/b/c /long\n");
    EXPECT_EQ(mapped("/a/b/c/d"), "/first/c/d");
    EXPECT_EQ(mapped("/a/c"), "/short/c");
}

TEST(map_root, a_later_line_replaces_in_the_earlier_place) {
    EXPECT_EQ(loaded("/a /one\n/a/b /two\nD> /a d:\n/a /three\n"),
              "M /a /three\nM /a/b /two\nD /a d:\n");
    EXPECT_EQ(mapped("/a/b"), "/three/b");
}

TEST(map_root, paths_of_any_length) {
    std::string from = "/" + std::string(100000, 'f');
    std::string to(100000, 't');
    support::write_file(system_file, from + " " + to + " \n");
    EXPECT_EQ(mapped(from + "/x"), to + "/x");
    EXPECT_EQ(mapped(from + "x"), from + "x");
}

TEST(load_mappings, lines_rows) {
    EXPECT_EQ(loaded("\n"
                     "# /comment /x\n"
                     "#D> x y\n"
                     "   # /indented /comment\n"
                     " \t /indented  \t /line\n"
                     "/a /b and what follows\n"
                     "M>/near /type\n"
                     "P> \t /far /type  \r\n"
                     "U> /u /uu\n"
                     "D> /d dd\n"
                     "M /letter\n"
                     "D:> /colon\n"
                     "/x> /arrow\n"
                     "/last /line"),
              "M /indented /line\n"
              "M /a /b\n"
              "M /near /type\n"
              "P /far /type\n"
              "U /u /uu\n"
              "D /d dd\n"
              "M M /letter\n"
              "M D:> /colon\n"
              "M /x> /arrow\n"
              "M /last /line\n");
}

TEST(load_mappings, load_mappings_warns_about_other_letters) {
    support::write_file("f", "/a /b\n\nX> /x /y\nd> /x /y\n>> x y\nM> /c /d\n");
    EXPECT_EQ(support::stderr_of([] { load_mappings("f", 1); }),
              "Warning: f:3: mapping type not one of [MPD]>\n"
              "Warning: f:4: mapping type not one of [MPD]>\n"
              "Warning: f:5: mapping type not one of [MPD]>\n");
    support::write_file(system_file, "");
    EXPECT_EQ(records(), "M /a /b\nM /c /d\n");
}

TEST(load_mappings, warns_about_a_missing_second_path) {
    support::write_file("f", "/a\n/b \t \nM>\nD> /c\nU>/c /d\nx");
    EXPECT_EQ(support::stderr_of([] { load_mappings("f", 0); }),
              "Warning: f:1: 2nd path not specified\n"
              "Warning: f:2: 2nd path not specified\n"
              "Warning: f:3: 2nd path not specified\n"
              "Warning: f:4: 2nd path not specified\n"
              "Warning: f:6: 2nd path not specified\n");
    support::write_file(system_file, "");
    EXPECT_EQ(records(), "U /c /d\n");
}

TEST(load_mappings, a_missing_file_is_reported_when_it_must_exist) {
    EXPECT_EQ(support::stderr_of([] { load_mappings("none", 0); }), "");
    EXPECT_EQ(support::stderr_of([] { load_mappings("none", 1); }),
              std::string("none: cannot open (") + strerror(ENOENT) + ")\n");
}

TEST(load_mappings, a_folder_reads_as_nothing) {
    support::make_folders("folder");
    EXPECT_EQ(support::stderr_of([] { load_mappings("folder", 1); }), "");
}

TEST(load_mappings, a_nul_before_a_blank_makes_no_empty_from_path) {
    std::string content("\0 /a /b\n/c /d\n", 15);
    support::write_file(system_file, content);
    std::string all = records();
    EXPECT_EQ(all.find("M  "), std::string::npos) << all;
    EXPECT_NE(all.find("M /c /d\n"), std::string::npos) << all;
}

// The lowest descriptor that is free.
int free_descriptor() {
    int descriptor = dup(0);
    close(descriptor);
    return descriptor;
}

TEST(load_mappings, closes_the_file) {
    support::write_file("f", "/a /b\n");
    int before = free_descriptor();
    for (int i = 0; i < 10; ++i)
        load_mappings("f", 1);
    EXPECT_EQ(free_descriptor(), before);
}

TEST(load_mappings, a_stream_that_cannot_be_made_is_as_no_file) {
    support::write_file("f", "/a /b\n");
    int before = free_descriptor();
    std::string text = support::stderr_of([] {
        fdopen_fails = true;
        load_mappings("f", 1);
        fdopen_fails = false;
    });
    EXPECT_EQ(text, std::string("f: cannot open (") + strerror(ENOMEM) + ")\n");
    EXPECT_EQ(free_descriptor(), before);
}

TEST(load_mappings, conditions_hold_to_the_next_one) {
    support::write_file("morva/data/sysnames.tab", "* n v b\n");
    EXPECT_EQ(loaded("/1 /always\n"
                     "=other mill\n"
                     "/2 /one of the patterns\n"
                     "=other\n"
                     "/3 /not\n"
                     "# comment\n"
                     "\n"
                     "X> not warned about\n"
                     "alone\n"
                     "!mi*\n"
                     "/4 /not\n"
                     "!other\n"
                     "/5 /yes\n"
                     "  = [a-m]ill\n"
                     "  /6 /yes\n"
                     "=s Unix-*\n"
                     "/7 /yes\n"
                     "!sUnix-2-{vax,pdp11}\n"
                     "/8 /not\n"
                     "!s Unix\n"
                     "/9 /yes\n"
                     "=\n"
                     "/10 /not\n"
                     "!\n"
                     "/11 /yes\n"),
              "M /1 /always\nM /2 /one\nM /5 /yes\nM /6 /yes\nM /7 /yes\n"
              "M /9 /yes\nM /11 /yes\n");
}

TEST(load_mappings, a_condition_ends_with_its_file) {
    support::write_file(user_file, "/2 /yes\n");
    EXPECT_EQ(loaded("=other\n/1 /not\n"), "M /2 /yes\n");
}

TEST(load_mappings, conditions_are_read_in_skipped_parts_too) {
    EXPECT_EQ(loaded("=other\n=mill\n/a /b\n"), "M /a /b\n");
}

int checked(const char *condition, int invert) {
    std::string text = condition;
    return chk_host(text.data(), invert);
}

TEST(chk_host, chk_host_rows) {
    support::write_file("morva/data/sysnames.tab", "* n v b O R C conf\n");
    const struct {
        const char *condition;
        int equal;   // with invert 0
        int unlike;  // with invert 1
    } rows[] = {
        {"mill", 0, 1},      {"other", 1, 0},  {"other\tmill", 0, 1},
        {" \t mill ", 0, 1}, {"", 1, 0},       {"  ", 1, 0},
        {"!mill", 1, 0},     {"!other", 0, 1}, {"{a,m*}", 0, 1},
        {"Mill", 1, 0},      {"sconf*", 0, 1}, {"s \t conf", 0, 1},
        {"smill", 1, 0},     {"s", 1, 0},      {"s mill conf", 0, 1},
        {" sconf", 1, 0},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(checked(row.condition, 0), row.equal) << row.condition;
        EXPECT_EQ(checked(row.condition, 1), row.unlike) << row.condition;
    }
}

TEST(chk_host, chk_host_takes_a_leading_s_for_the_system) {
    host_name = "sun";
    support::write_file("morva/data/sysnames.tab", "* n v b O R C un\n");
    EXPECT_EQ(checked("sun", 0), 0);
    EXPECT_EQ(checked("sun*", 1), 1);
    EXPECT_EQ(checked("[s]un", 0), 0);
    EXPECT_EQ(host_questions, 1);
    EXPECT_EQ(system_questions, 1);
}

TEST(chk_host, asks_for_the_system_only_when_tested) {
    EXPECT_EQ(checked("mill", 0), 0);
    EXPECT_EQ(system_questions, 0);
    std::string table = std::string(getenv("MORVA")) + "/data/sysnames.tab";
    EXPECT_FATAL(checked("s x", 0), 255,
                 "test: " + table + ": " + strerror(ENOENT) + "\n");
}

TEST(load_rootmaps, the_users_records_come_last) {
    support::write_file(user_file, "/u /user\n/s /changed\n");
    EXPECT_EQ(loaded("/s /system\n/t /system\n"),
              "M /s /changed\nM /t /system\nM /u /user\n");
}

TEST(load_rootmaps, maproots_is_read_when_roots_map_is_not_readable) {
    support::write_file(other_user_file, "/b /other\n");
    EXPECT_EQ(loaded(""), "M /b /other\n");
}

TEST(load_rootmaps, roots_map_hides_maproots) {
    support::write_file(user_file, "/a /user\n");
    support::write_file(other_user_file, "/b /other\n");
    EXPECT_EQ(loaded(""), "M /a /user\n");
}

TEST(load_rootmaps, the_users_folder_is_home_morva) {
    setenv("HOME_MORVA", "mine", 1);
    support::write_file("mine/maproots", "/a /mine\n");
    support::write_file(user_file, "/a /user\n");
    EXPECT_EQ(loaded(""), "M /a /mine\n");
}

TEST(load_rootmaps, a_missing_system_file_is_reported) {
    support::write_file(user_file, "/a /user\n");
    std::string file = std::string(getenv("MORVA")) + "/data/roots.map";
    EXPECT_EQ(support::stderr_of([] { EXPECT_EQ(mapped("/a"), "/user"); }),
              file + ": cannot open (" + strerror(ENOENT) + ")\n");
    EXPECT_EQ(support::stderr_of([] { EXPECT_EQ(mapped("/b"), "/b"); }), "");
}

TEST(load_rootmaps, reads_the_files_once) {
    EXPECT_EQ(loaded("/a /one\n"), "M /a /one\n");
    EXPECT_EQ(loaded("/a /two\n"), "M /a /one\n");
}

TEST(load_rootmaps, gives_the_current_array) {
    EXPECT_EQ(loaded(""), "");
    std::string expected;
    for (int i = 0; i < 100; ++i) {
        std::string from = "/f" + std::to_string(i);
        add(3, from, "/t");
        expected += "M " + from + " /t\n";
        EXPECT_EQ(records(), expected);
    }
}

TEST(add_map, works_before_the_first_load) {
    add(3, "/a", "/added");
    support::write_file("f", "/f /file\n");
    load_mappings("f", 1);
    EXPECT_EQ(loaded("/b /system\n/a /replaced\n"),
              "M /a /replaced\nM /f /file\nM /b /system\n");
}

TEST(add_map, types_have_records_of_their_own) {
    support::write_file(system_file, "");
    for (int type = 1; type <= 4; ++type)
        add(type, "/a", "/x");
    add(2, "/a", "/y");
    add(2, "/A", "/z");
    EXPECT_EQ(records(), "D /a /x\nP /a /y\nM /a /x\nU /a /x\nP /A /z\n");
}

TEST(add_map, an_empty_from_path_fits_absolute_paths) {
    support::write_file(system_file, "");
    add(3, "", "/top");
    EXPECT_EQ(mapped("/x"), "/top/x");
    EXPECT_EQ(mapped(""), "/top");
    EXPECT_EQ(mapped("x"), "x");
}

// A plain list beside the records: equal after every kind of addition.
TEST(add_map, agrees_with_a_plain_list) {
    struct plain_record {
        int type;
        std::string from, to;
    };
    std::vector<plain_record> list;
    support::write_file(system_file, "");
    unsigned seed = 1;
    for (int i = 0; i < 5000; ++i) {
        seed = seed * 1103515245 + 12345;
        int type = static_cast<int>(seed >> 20) % 4 + 1;
        std::string from = "/" + std::to_string((seed >> 8) % 900);
        std::string to = std::to_string(i);
        add(type, from, to);
        auto old = list.begin();
        while (old != list.end() && (old->type != type || old->from != from))
            ++old;
        if (old != list.end())
            old->to = to;
        else
            list.push_back({type, from, to});
    }
    std::string expected;
    for (const plain_record &one : list) {
        expected += letters[static_cast<size_t>(one.type)];
        expected += " " + one.from + " " + one.to + "\n";
    }
    EXPECT_EQ(records(), expected);
}

TEST(add_map, a_hundred_thousand_paths_with_one_tag) {
    std::vector<std::string> paths = support::equal_tags(100000);
    tovan::other_comparisons = 0;
    for (const char *to : {"/old", "/new"}) {
        for (const std::string &path : paths)
            add(3, path, to);
    }
    EXPECT_GT(tovan::other_comparisons, paths.size());
    // Twice, and again as often while the index grows.
    EXPECT_LT(tovan::other_comparisons, paths.size() * 6 * 2 * 17);
    support::write_file(system_file, "");
    EXPECT_EQ(mapped(paths[99999] + "/x"), "/new/x");
    EXPECT_EQ(mapped(paths[0]), "/new");
}

// A search through the records would need 2 * 10^10 comparisons here.
TEST(add_map, two_hundred_thousand_records_are_added) {
    for (int i = 0; i < 200000; ++i)
        add(3, "/from/" + std::to_string(i), "/to");
    support::write_file(system_file, "");
    EXPECT_EQ(mapped("/from/199999/x"), "/to/x");
    EXPECT_EQ(mapped("/from/200000/x"), "/from/200000/x");
}

const char page[] = "formats/root-maps.md";

TEST(root_maps_page, shows_what_the_example_gives) {
    support::write_file("morva/data/sysnames.tab", "* n v b\n");
    support::write_file(system_file, support::doc_block(page, "roots.map"));
    for (const auto &row : support::doc_table(page, "| Path | by `map_root` |"))
        EXPECT_EQ(mapped(row[0]), row[1]);
    dy output;
    dynew(&output, 0);
    for (const auto &row :
         support::doc_table(page, "| Path | by `dospath`, mode 1 |")) {
        EXPECT_EQ(dospath(&output, row[0].c_str(), nullptr, 1, 1), row[1]);
    }
    for (const auto &row : support::doc_table(page, "| Path | by `ixpath` |"))
        EXPECT_EQ(ixpath(&output, row[0].c_str(), 1), row[1]);
    free(output.buffer);
}

}  // namespace
