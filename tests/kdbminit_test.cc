// kdbminit_test.cc: texts under names, on disk.
#include "support/child.h"
#include "support/database.h"
#include "support/database_model.h"
#include "support/tree.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <string.h>
#include <sys/stat.h>
#include <tovan/kdbminit.h>
#include <unistd.h>
#include <map>
#include <random>
#include <string>

namespace {

using support::page_of;
using support::read_file;
using support::write_file;

constexpr size_t page_size = 4096;

// A string as it is stored.
std::string stored(const std::string &text) {
    return text + '\0';
}

// An open database that closes itself; fails the test when it did not open.
struct open_kdbm : kdbm_db {
    explicit open_kdbm(const char *name, int mode = 1) : kdbm_db{} {
        const char *message = kdbminit(this, name, mode);
        EXPECT_EQ(message, nullptr) << message;
    }
    ~open_kdbm() {
        kdbminit(this, nullptr, 0);
    }
    open_kdbm(const open_kdbm &) = delete;
    open_kdbm &operator=(const open_kdbm &) = delete;
};

// The text of a key with its NUL; "none" when there is none.
std::string text_of(kdbm_db *db, const std::string &key) {
    const dbm_datum *found = kdbmfind(db, key.c_str());
    if (found == nullptr) return "none";
    return std::string(found->data, static_cast<size_t>(found->length));
}

unsigned permissions_of(const char *path) {
    struct stat status = {};
    EXPECT_EQ(stat(path, &status), 0) << path;
    return status.st_mode & 07777;
}

bool is_closed(const kdbm_db &db) {
    return db.handle == nullptr && db.path == nullptr;
}

TEST(kdbminit, mode_1_makes_two_files) {
    umask(0);
    kdbm_db db{};
    ASSERT_EQ(kdbminit(&db, "k", 1), nullptr);
    EXPECT_EQ(read_file("k.dir"), "\4");
    EXPECT_EQ(read_file("k.pag"), "");
    EXPECT_EQ(permissions_of("k.dir"), 0644u);
    EXPECT_EQ(permissions_of("k.pag"), 0644u);
    EXPECT_FALSE(support::file_exists("k.data"));
    EXPECT_STREQ(db.path, "k.dir");
    EXPECT_EQ(db.handle->page_size, 4096);
    EXPECT_EQ(db.handle->flags, 0);
    EXPECT_EQ(kdbminit(&db, "k", 0), nullptr);
    EXPECT_TRUE(is_closed(db));
    umask(022);
}

TEST(kdbminit, mode_1_empties_what_is_there) {
    {
        open_kdbm db("k");
        kdbmadd(&db, "a", "x", 0);
    }
    open_kdbm db("k");
    EXPECT_EQ(read_file("k.pag"), "");
    EXPECT_EQ(text_of(&db, "a"), "none");
}

TEST(kdbminit, mode_2_keeps_what_is_there) {
    {
        open_kdbm db("k", 2);
        EXPECT_EQ(kdbmadd(&db, "a", "x", 0), 0) << "made where nothing was";
    }
    open_kdbm db("k", 2);
    EXPECT_EQ(text_of(&db, "a"), stored("x"));
    EXPECT_EQ(kdbmadd(&db, "b", "y", 0), 0);
    EXPECT_EQ(db.handle->flags, 0);
}

TEST(kdbminit, other_modes_read) {
    {
        open_kdbm db("k");
        kdbmadd(&db, "a", "x", 0);
    }
    for (int mode : {3, -1, 100}) {
        open_kdbm db("k", mode);
        EXPECT_EQ(db.handle->flags, 1) << mode;
        EXPECT_EQ(text_of(&db, "a"), stored("x"));
    }
    kdbm_db db{};
    EXPECT_STREQ(kdbminit(&db, "none", 3), "dbminit failed");
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(support::file_exists("none.dir"));
    EXPECT_TRUE(is_closed(db));
}

TEST(kdbminit, mode_0_of_a_closed_database_does_nothing) {
    kdbm_db db{};
    EXPECT_EQ(kdbminit(&db, nullptr, 0), nullptr);
    EXPECT_EQ(kdbminit(&db, "k", 0), nullptr);
    EXPECT_TRUE(is_closed(db));
    EXPECT_FALSE(support::file_exists("k.dir"));
}

TEST(kdbminit, an_open_database_is_closed_first) {
    kdbm_db db{};
    ASSERT_EQ(kdbminit(&db, "one", 1), nullptr);
    int descriptor = db.handle->dir_fd;
    ASSERT_EQ(kdbminit(&db, "two", 1), nullptr);
    EXPECT_EQ(db.handle->dir_fd, descriptor) << "its descriptors are free";
    EXPECT_STREQ(db.path, "two.dir");
    EXPECT_STREQ(kdbminit(&db, "none", 3), "dbminit failed");
    EXPECT_TRUE(is_closed(db));
}

TEST(kdbminit, says_what_cannot_be_made) {
    ASSERT_EQ(mkdir("d.dir", 0755), 0);
    ASSERT_EQ(mkdir("p.pag", 0755), 0);
    write_file("o.dir", "");
    write_file("o.pag", "");
    const struct {
        const char *name;
        int mode;
        const char *message;
        int reason;
    } rows[] = {
        {"none/k", 1, "Cannot create new '.dir' file", ENOENT},
        {"none/k", 2, "Cannot create new '.dir' file", ENOENT},
        {"d", 1, "Cannot create new '.dir' file", EISDIR},
        {"p", 1, "Cannot create new '.pag' file", EISDIR},
        {"p2/../p", 2, "Cannot create new '.dir' file", ENOENT},
        {"o", 2, "dbminit failed", EINVAL},
        {"o", 3, "dbminit failed", EINVAL},
        {"", 3, "dbminit failed", EINVAL},
    };
    for (const auto &row : rows) {
        kdbm_db db{};
        errno = 0;
        const char *message = kdbminit(&db, row.name, row.mode);
        int reason = errno;
        EXPECT_STREQ(message, row.message) << row.name << row.mode;
        EXPECT_EQ(reason, row.reason) << row.name << row.mode;
        EXPECT_TRUE(is_closed(db));
    }
}

TEST(kdbminit, what_may_not_be_written_is_made_anew_in_mode_2) {
    support::outcome end = support::in_child([] {
        write_file("k.dir", "\4");
        chmod("k.dir", 0444);
        if (getuid() == 0 && setuid(65534) != 0) _exit(1);
        kdbm_db db{};
        puts(kdbminit(&db, "k", 2));
    });
    EXPECT_EQ(end.out, "Cannot create new '.dir' file\n");
    EXPECT_EQ(read_file("k.dir"), "\4");
}

TEST(kdbminit, the_page_size_is_that_of_the_file) {
    write_file("k.dir", "\1");
    write_file("k.pag", "");
    open_kdbm db("k", 2);
    EXPECT_EQ(db.handle->page_size, 1024);
}

TEST(kdbmadd, keys_and_texts_are_stored_with_their_nul) {
    open_kdbm db("k");
    EXPECT_EQ(kdbmadd(&db, "CC", "gcc", 0), 0);
    EXPECT_EQ(kdbmadd(&db, "", "", 0), 0);
    EXPECT_EQ(read_file("k.pag"),
              page_of({{stored("CC"), stored("gcc")}, {stored(""), stored("")}},
                      page_size));
    EXPECT_EQ(read_file("k.dir"), "\4");
}

TEST(kdbmadd, without_a_separator_the_text_is_replaced) {
    open_kdbm db("k");
    EXPECT_EQ(kdbmadd(&db, "a", "x", 0), 0);
    EXPECT_EQ(kdbmadd(&db, "b", "z", 0), 0);
    EXPECT_EQ(kdbmadd(&db, "a", "longer", 0), 0);
    EXPECT_EQ(read_file("k.pag"), page_of({{stored("b"), stored("z")},
                                           {stored("a"), stored("longer")}},
                                          page_size));
}

TEST(kdbmadd, with_a_separator_texts_are_joined) {
    open_kdbm db("k");
    EXPECT_EQ(kdbmadd(&db, "a", "x", ':'), 0);
    EXPECT_EQ(text_of(&db, "a"), stored("x")) << "the first one stands alone";
    EXPECT_EQ(kdbmadd(&db, "a", "y", ':'), 0);
    EXPECT_EQ(text_of(&db, "a"), stored("x:y"));
    EXPECT_EQ(kdbmadd(&db, "a", "", '\n'), 0);
    EXPECT_EQ(text_of(&db, "a"), stored("x:y\n"));
    EXPECT_EQ(kdbmadd(&db, "a", "z", 0x1ff), 0);
    EXPECT_EQ(text_of(&db, "a"), stored("x:y\n\xffz"));
    EXPECT_EQ(kdbmadd(&db, "a", "new", 0), 0);
    EXPECT_EQ(text_of(&db, "a"), stored("new"));
}

TEST(kdbmadd, a_null_text_removes_the_key) {
    open_kdbm db("k");
    kdbmadd(&db, "a", "x", 0);
    EXPECT_EQ(kdbmadd(&db, "a", nullptr, 0), 0);
    EXPECT_EQ(text_of(&db, "a"), "none");
    EXPECT_EQ(kdbmadd(&db, "a", nullptr, ':'), -1) << "it is gone";
}

TEST(kdbmadd, key_and_joined_texts_have_1024_bytes) {
    open_kdbm db("k");
    // With NULs: key 4, old text 500, new text up to 520.
    kdbmadd(&db, "key", std::string(499, 'o').c_str(), 0);
    std::string page = read_file("k.pag");
    std::string said = support::stderr_of([&] {
        EXPECT_EQ(kdbmadd(&db, "key", std::string(520, 'n').c_str(), ','), 22);
    });
    EXPECT_EQ(said, "key: too many entries\n");
    EXPECT_EQ(read_file("k.pag"), page);
    EXPECT_EQ(kdbmadd(&db, "key", std::string(519, 'n').c_str(), ','), 0);
    EXPECT_EQ(text_of(&db, "key"),
              stored(std::string(499, 'o') + "," + std::string(519, 'n')));
}

TEST(kdbmadd, a_text_alone_may_fill_a_page) {
    open_kdbm db("k");
    // Two bytes for the count, four for the offsets, two for the key.
    std::string longest(page_size - 6 - 2 - 1, 'x');
    EXPECT_EQ(kdbmadd(&db, "a", longest.c_str(), ':'), 0);
    EXPECT_EQ(text_of(&db, "a"), stored(longest));
    errno = 0;
    EXPECT_EQ(kdbmadd(&db, "b", (longest + "x").c_str(), 0), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(text_of(&db, "b"), "none");
}

TEST(kdbmadd, says_what_is_wrong) {
    kdbm_db db{};
    std::string said = support::stderr_of([&] {
        EXPECT_EQ(kdbmadd(&db, "a", "x", 0), 20);
        EXPECT_EQ(kdbmadd(&db, "a", nullptr, 0), 20);
        EXPECT_EQ(kdbmfind(&db, "a"), nullptr);
    });
    EXPECT_EQ(said,
              "database not opened\ndatabase not opened\ndatabase not open\n");
    open_kdbm("k");
    open_kdbm reader("k", 3);
    said = support::stderr_of([&] {
        EXPECT_EQ(kdbmadd(&reader, "a", "x", 0), 23);
        EXPECT_EQ(kdbmadd(&reader, "a", nullptr, 0), 23);
    });
    EXPECT_EQ(said, "database not updatable\ndatabase not updatable\n");
}

TEST(kdbmadd, a_text_of_another_origin_is_joined_as_it_is) {
    const struct {
        std::string known;
        std::string joined;
    } rows[] = {
        {"", stored(":y")},
        {"x", stored(":y")},
        {std::string("a\0b", 3), stored(std::string("a\0:y", 4))},
        {std::string(1, '\0'), stored(":y")},
    };
    for (const auto &row : rows) {
        write_file("k.dir", "\4");
        write_file("k.pag", page_of({{stored("a"), row.known}}, page_size));
        open_kdbm db("k", 2);
        EXPECT_EQ(kdbmadd(&db, "a", "y", ':'), 0);
        EXPECT_EQ(text_of(&db, "a"), row.joined);
    }
}

TEST(kdbmadd, a_page_that_cannot_be_read_is_not_replaced) {
    write_file("k.dir", "\4");
    std::string wrong = support::raw_page({3, 1, 2, 3}, page_size);
    write_file("k.pag", wrong);
    open_kdbm db("k", 2);
    for (int separator : {0, 1}) {
        errno = 0;
        EXPECT_EQ(kdbmadd(&db, "a", "x", separator), -1);
        EXPECT_EQ(errno, EIO);
    }
    EXPECT_EQ(kdbmadd(&db, "a", nullptr, 0), -1);
    EXPECT_EQ(kdbmfind(&db, "a"), nullptr);
    EXPECT_EQ(read_file("k.pag"), wrong);
}

TEST(kdbmfind, gives_one_item_for_all_calls) {
    open_kdbm db("k");
    kdbmadd(&db, "a", "x", 0);
    kdbmadd(&db, "b", "yy", 0);
    dbm_datum *one = kdbmfind(&db, "a");
    ASSERT_NE(one, nullptr);
    EXPECT_EQ(one->length, 2);
    dbm_datum *two = kdbmfind(&db, "b");
    EXPECT_EQ(two, one);
    EXPECT_EQ(two->length, 3);
    EXPECT_EQ(kdbmfind(&db, "c"), nullptr);
    EXPECT_EQ(one->data, nullptr);
}

// Everything beside a map, and the files beside the model.
TEST(kdbmadd, files_are_those_of_the_model) {
    open_kdbm db("k");
    support::database_model model(4);
    std::map<std::string, std::string> texts;
    std::mt19937 random(20261122);
    auto number = [&random](unsigned below) {
        return static_cast<unsigned>(random() % below);
    };
    for (int step = 1; step <= 20000; ++step) {
        std::string key = "key" + std::to_string(number(900));
        std::string text(number(120), static_cast<char>('a' + number(26)));
        auto known = texts.find(key);
        if (number(10) == 0) {
            int expected = known != texts.end() ? 0 : -1;
            EXPECT_EQ(kdbmadd(&db, key.c_str(), nullptr, 0), expected);
            EXPECT_EQ(model.remove(stored(key)), expected);
            texts.erase(key);
            continue;
        }
        bool joins = number(2) == 0;
        std::string joined = text;
        if (joins && known != texts.end()) joined = known->second + "," + text;
        if (joins && known != texts.end() &&
            key.size() + 1 + joined.size() + 1 > 1024)
            continue;
        EXPECT_EQ(kdbmadd(&db, key.c_str(), text.c_str(), joins ? ',' : 0), 0);
        EXPECT_EQ(model.store(stored(key), stored(joined), true), 0);
        texts[key] = joined;
        if (step % 4000 != 0) continue;
        EXPECT_EQ(read_file("k.dir"), model.directory());
        EXPECT_EQ(model.flaw_of_pages("k.pag"), "");
    }
    for (const auto &[key, text] : texts)
        EXPECT_EQ(text_of(&db, key), stored(text));
}

}  // namespace
