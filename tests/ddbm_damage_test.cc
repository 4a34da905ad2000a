// ddbm_damage_test.cc: databases as nobody should write them: every call comes
// back, with what is there or with an error, and reads inside its page.
#include "support/child.h"
#include "support/database.h"
#include "support/tree.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <random>

namespace {

using support::bytes_of;
using support::database;
using support::item_of;
using support::page_of;
using support::raw_page;
using support::write_file;

constexpr int io_error = 2;

std::string zeros(size_t count) {
    return std::string(count, '\0');
}

std::string directory(int page_kb, size_t size = 1, char fill = '\0') {
    return static_cast<char>(page_kb) + std::string(size - 1, fill);
}

// What a look-up of "a" ends in.
enum class answer { value, missing, damaged, no_handle };

struct row {
    std::string what;
    std::string directory;
    std::string pages;
    answer expected;
};

const std::string sound = page_of({{"a", "1"}, {"b", "2"}});

// Everything that can be done, on a database of which nothing is known. The
// sanitizers watch.
void do_everything(database *db) {
    std::vector<std::string> keys = {"a", "b", "c", std::string(300, 'k')};
    dbm_datum key = dbm_firstkey(*db);
    for (int i = 0; i < 1000 && key.data != nullptr; ++i) {
        keys.push_back(*bytes_of(key));
        key = dbm_nextkey(*db);
    }
    for (const std::string &each : keys) {
        bytes_of(dbm_fetch(*db, item_of(each)));
        bytes_of(dbm_alfetch(*db, item_of(each)));
    }
    for (int i = 0; i < 20; ++i) {
        db->put("new" + std::to_string(i), std::string(100, 'n'));
        db->put(keys[static_cast<size_t>(i) % keys.size()], "replaced", i % 2);
        db->remove("new" + std::to_string(i / 2));
    }
    for (const std::string &each : keys)
        db->remove(each);
    db->keys();
}

answer look_up(database *db) {
    if (*db == nullptr) return answer::no_handle;
    errno = 0;
    dbm_datum found = dbm_fetch(*db, item_of("a"));
    if (found.data != nullptr) return answer::value;
    bool failed = ((*db)->flags & io_error) != 0;
    EXPECT_EQ(errno, failed ? EIO : 0);
    return failed ? answer::damaged : answer::missing;
}

void check(const std::vector<row> &rows) {
    for (const row &each : rows) {
        SCOPED_TRACE(each.what);
        write_file("db.dir", each.directory);
        write_file("db.pag", each.pages);
        database db("db");
        EXPECT_EQ(look_up(&db), each.expected);
        if (db == nullptr) continue;
        support::stderr_of([&] { do_everything(&db); });
    }
}

TEST(ddbm_damage, directories_of_all_kinds) {
    std::vector<row> rows = {
        {"empty", "", sound, answer::no_handle},
        {"page size 0", zeros(1), sound, answer::no_handle},
        {"page size 0, and more", zeros(4096), sound, answer::no_handle},
        {"all bits set", directory(1, 4096, '\xff'), sound, answer::missing},
        {"all bits of a byte", directory(1, 2, '\xff'), sound, answer::missing},
        {"one bit, no page", directory(1, 2, '\1'), sound, answer::missing},
        {"a bit below a clear one", directory(1, 2, '\xfe'), sound,
         answer::value},
        {"text", std::string("\1this is no directory"), sound, answer::value},
        {"a directory as pages", sound, sound, answer::no_handle},
    };
    for (size_t size : {1, 2, 3, 4095, 4096, 4097, 8192, 12289})
        rows.push_back({std::to_string(size) + " bytes", directory(1, size),
                        sound, answer::value});
    check(rows);
}

TEST(ddbm_damage, page_sizes_of_all_kinds) {
    std::vector<row> rows;
    for (int kb : {1, 2, 4, 63, 64}) {
        size_t size = static_cast<size_t>(kb) * 1024;
        rows.push_back({std::to_string(kb) + " KB", directory(kb),
                        page_of({{"a", "1"}}, size), answer::value});
        rows.push_back({std::to_string(kb) + " KB, no page", directory(kb), "",
                        answer::missing});
    }
    // Offsets of short keys do not fit there.
    for (int kb : {65, 128, 255}) {
        size_t size = static_cast<size_t>(kb) * 1024;
        std::string first(size - 65535, 'k');
        rows.push_back({std::to_string(kb) + " KB", directory(kb),
                        page_of({{first, ""}, {"a", "1"}}, size),
                        answer::value});
        rows.push_back({std::to_string(kb) + " KB, no page", directory(kb), "",
                        answer::missing});
    }
    rows.push_back(
        {"1 KB pages read as 2", directory(2), sound + sound, answer::missing});
    rows.push_back({"4 KB pages read as 1", directory(1),
                    page_of({{"a", "1"}}, 4096), answer::damaged});
    check(rows);
}

TEST(ddbm_damage, page_files_cut_at_every_place) {
    std::vector<row> rows;
    for (size_t size : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 512, 1020, 1021,
                        1022, 1023, 1024}) {
        // The count comes first, then four entries, the items last. Of the
        // fourth entry one byte makes a lower offset.
        answer expected = answer::damaged;
        if (size < 2) expected = answer::missing;
        if (size >= 9) expected = answer::missing;
        if (size == 1024) expected = answer::value;
        rows.push_back({"cut at " + std::to_string(size), directory(1),
                        sound.substr(0, size), expected});
    }
    for (size_t more : {1, 2, 1023, 1025})
        rows.push_back({"and " + std::to_string(more), directory(1),
                        sound + std::string(more, '\xff'), answer::value});
    check(rows);
}

TEST(ddbm_damage, counts_of_all_kinds) {
    std::vector<row> rows;
    for (int count :
         {1,   3,   5,   6,   8,    254,  255,   256,   508,   509,
          510, 511, 512, 513, 1023, 1024, 32767, 32768, 65534, 65535}) {
        std::string page = sound;
        page[0] = static_cast<char>(count >> 8);
        page[1] = static_cast<char>(count);
        rows.push_back({"n = " + std::to_string(count), directory(1), page,
                        answer::damaged});
    }
    std::string page = sound;
    page[1] = 0;
    rows.push_back({"n = 0", directory(1), page, answer::missing});
    page[1] = 2;
    rows.push_back({"n = 2", directory(1), page, answer::value});
    rows.push_back(
        {"ones", directory(1), std::string(1024, '\xff'), answer::damaged});
    check(rows);
}

TEST(ddbm_damage, offsets_of_all_kinds) {
    std::vector<row> rows;
    struct {
        const char *what;
        std::vector<int> words;
        answer expected;
    } pages[] = {
        {"rising", {4, 1000, 1001, 1002, 1003}, answer::damaged},
        {"one rises", {4, 1023, 1022, 1022, 1023}, answer::damaged},
        {"key beyond the page", {2, 1025, 1000}, answer::damaged},
        {"value beyond the page", {2, 1000, 1025}, answer::damaged},
        {"far beyond", {2, 65535, 65535}, answer::damaged},
        {"into the entries", {2, 1000, 5}, answer::damaged},
        {"into the count", {2, 1000, 1}, answer::damaged},
        {"0", {2, 0, 0}, answer::damaged},
        {"right behind the entries", {2, 1000, 6}, answer::missing},
        {"all at the end", {4, 1024, 1024, 1024, 1024}, answer::missing},
        {"all equal", {4, 10, 10, 10, 10}, answer::missing},
        {"one byte too low", {4, 9, 9, 9, 9}, answer::damaged},
        {"the whole page", {2, 6, 6}, answer::missing},
    };
    for (const auto &page : pages)
        rows.push_back(
            {page.what, directory(1), raw_page(page.words), page.expected});
    check(rows);
}

TEST(ddbm_damage, pairs_of_all_kinds) {
    std::string filled(1024 - 6 - 6, 'f');
    check({
        {"no bytes", directory(1), page_of({{"", ""}, {"a", ""}}),
         answer::value},
        {"only empty keys", directory(1), page_of({{"", ""}, {"", ""}}),
         answer::missing},
        {"an empty key with a value", directory(1), page_of({{"", "1"}}),
         answer::missing},
        {"two equal keys", directory(1), page_of({{"a", "1"}, {"a", "2"}}),
         answer::value},
        {"full to the byte", directory(1), page_of({{"a", "1"}, {"b", filled}}),
         answer::value},
        {"on a wrong page", directory(1, 2, '\1'), page_of({{"a", "1"}}),
         answer::missing},
        {"on the right page", directory(1, 2, '\1'),
         zeros(1024) + page_of({{"a", "1"}}), answer::value},
        {"its page is damaged", directory(1, 2, '\1'), sound + raw_page({1}),
         answer::damaged},
        {"another page is damaged", directory(1, 2, '\1'),
         raw_page({1}) + page_of({{"a", "1"}}), answer::value},
    });
}

TEST(ddbm_damage, the_first_of_two_equal_keys_counts) {
    write_file("db.dir", directory(1));
    write_file("db.pag", page_of({{"a", "1"}, {"a", "2"}}));
    database db("db");
    EXPECT_EQ(db.get("a"), "1");
    EXPECT_EQ(db.remove("a"), 0);
    EXPECT_EQ(db.get("a"), "2");
}

TEST(ddbm_damage, a_key_on_a_wrong_page_is_listed_and_not_found) {
    write_file("db.dir", directory(1, 4096, '\0').replace(1, 1, "\1"));
    write_file("db.pag", page_of({{"a", "1"}}) + page_of({{"c", "3"}}));
    database db("db");
    EXPECT_EQ(db.keys(), (std::vector<std::string>{"a", "c"}));
    EXPECT_EQ(db.get("a"), std::nullopt);
    EXPECT_EQ(db.get("c"), "3");
}

TEST(ddbm_damage, a_damaged_page_ends_the_iteration_and_no_more) {
    write_file("db.dir", directory(1, 2, '\1'));
    write_file("db.pag", page_of({{"b", "2"}}) + raw_page({1}) + sound);
    database db("db");
    errno = 0;
    EXPECT_EQ(db.keys(), std::vector<std::string>{"b"});
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(db.get("b"), "2");
    EXPECT_EQ(db.put("a", "1"), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(db.remove("a"), -1);
    EXPECT_EQ(db.put("d", "4"), 0);
    write_file("db.pag", raw_page({1}) + sound);
    errno = 0;
    EXPECT_EQ(dbm_firstkey(db).data, nullptr);
    EXPECT_EQ(errno, EIO);
}

TEST(ddbm_damage, a_refused_page_leaves_the_one_in_the_buffer) {
    write_file("db.dir", directory(1, 2, '\1'));
    write_file("db.pag", page_of({{"b", "2"}}) + raw_page({1}));
    database db("db");
    EXPECT_EQ(db.get("b"), "2");
    EXPECT_EQ(db.get("a"), std::nullopt);
    EXPECT_EQ(db->page_no, 0);
    EXPECT_EQ(db.get("b"), "2");
    write_file("db.pag", raw_page({1}) + raw_page({1}));
    EXPECT_EQ(db.get("b"), "2") << "still there";
    EXPECT_EQ(db.get("a"), std::nullopt);
    EXPECT_EQ(db->page_no, -1);
    EXPECT_EQ(db.get("b"), std::nullopt);
}

TEST(ddbm_damage, files_cut_short_while_open_are_no_signal) {
    for (const char *file : {"db.dir", "db.pag"}) {
        for (off_t size : {0, 1, 500, 1024, 5000}) {
            SCOPED_TRACE(file + std::to_string(size));
            database db("db", 1);
            for (int i = 0; i < 300; ++i)
                db.put("key" + std::to_string(i), std::string(50, 'v'));
            EXPECT_EQ(db.keys().size(), 300u);
            EXPECT_EQ(truncate(file, size), 0);
            for (int i = 0; i < 300; ++i) {
                std::optional<std::string> found =
                    db.get("key" + std::to_string(i));
                EXPECT_TRUE(!found || found->size() == 50) << i;
            }
            support::stderr_of([&] { do_everything(&db); });
            EXPECT_EQ(truncate(file, 0), 0);
            support::stderr_of([&] { do_everything(&db); });
        }
    }
}

TEST(ddbm_damage, a_file_cut_short_while_it_is_listed_ends_the_list) {
    database db("db", 1);
    for (int i = 0; i < 3000; ++i)
        db.put("key" + std::to_string(i), std::string(50, 'v'));
    dbm_datum key = dbm_firstkey(db);
    EXPECT_EQ(truncate("db.pag", 0), 0);
    int left = 0;
    for (; key.data != nullptr; key = dbm_nextkey(db))
        ++left;
    EXPECT_LT(left, 3000);
}

// A directory with one path of set bits, as deep as wanted.
void write_deep_directory(const std::string &key, int depth, off_t size) {
    write_file("db.dir", "\1");
    int file = open("db.dir", O_RDWR);
    EXPECT_EQ(ftruncate(file, size), 0);
    uint32_t hash = dbm_hash(key.data(), static_cast<int>(key.size()));
    uint64_t bit = 0;
    for (int level = 0; level < depth; ++level) {
        auto at = static_cast<off_t>(bit / 8 + 1);
        unsigned char byte = 0;
        EXPECT_EQ(pread(file, &byte, 1, at), 1);
        byte = static_cast<unsigned char>(byte | 1 << bit % 8);
        EXPECT_EQ(pwrite(file, &byte, 1, at), 1);
        bit = 2 * bit + 1 + (hash >> level % 32 & 1);
    }
    close(file);
}

TEST(ddbm_damage, directories_beyond_2_to_the_31_bits) {
    const std::string key = "a";
    const off_t size = 300 << 20;
    const std::string page = page_of({{key, "1"}});
    for (int depth : {0, 1, 15, 30, 31}) {
        SCOPED_TRACE(depth);
        write_deep_directory(key, depth, size);
        write_file("db.pag", "");
        auto number = static_cast<off_t>(97u & ((uint64_t{1} << depth) - 1));
        int file = open("db.pag", O_RDWR);
        EXPECT_EQ(pwrite(file, page.data(), 1024, number * 1024), 1024);
        close(file);
        database db("db");
        ASSERT_NE(db, nullptr);
        EXPECT_EQ(db->dir_bits, INT32_MAX);
        EXPECT_EQ(db.get(key), "1");
        EXPECT_EQ(db->page_no, number);
        EXPECT_EQ(db->hash_mask, (uint64_t{1} << depth) - 1);
        EXPECT_GE(db->cur_bit, 0);
        EXPECT_EQ(db.put(key, "2"), 0);
        EXPECT_EQ(db.get(key), "2");
        support::stderr_of([&] { do_everything(&db); });
    }
}

TEST(ddbm_damage, a_page_of_the_last_depth_cannot_be_split) {
    std::vector<std::string> keys = support::keys_of_one_hash(2);
    write_deep_directory(keys[0], 31, 300 << 20);
    write_file("db.pag", "");
    database db("db");
    EXPECT_EQ(db.put(keys[0], std::string(900, 'v')), 0);
    EXPECT_EQ(db->hash_mask, 0x7fffffffu);
    errno = 0;
    EXPECT_EQ(db.put(keys[1], std::string(900, 'v')), -1);
    EXPECT_EQ(errno, EFBIG);
    EXPECT_EQ(db->flags, io_error);
    EXPECT_EQ(db.get(keys[0]), std::string(900, 'v'));
}

TEST(ddbm_damage, one_file_under_both_names) {
    write_file("both", "\1");
    for (int round = 0; round < 2; ++round) {
        dbm_handle *db = dbm_prep("both", "both", 1, O_RDWR, 0);
        ASSERT_NE(db, nullptr);
        std::string message = support::stderr_of([&] {
            for (int i = 0; i < 300; ++i) {
                std::string key = "key" + std::to_string(i);
                dbm_store(db, item_of(key), item_of(key), 1);
                dbm_fetch(db, item_of(key));
                dbm_delete(db, item_of("key" + std::to_string(i / 2)));
            }
            dbm_firstkey(db);
        });
        dbm_close(db);
    }
}

TEST(ddbm_damage, files_that_may_only_be_read_are_not_opened_for_update) {
    { database db("db", 1); }
    chmod("db.dir", 0444);
    chmod("db.pag", 0444);
    chmod(".", 0755);
    support::outcome end = support::in_child([] {
        if (geteuid() == 0 && setuid(65534) != 0) return;
        EXPECT_EQ(dbm_open("db", O_RDWR, 0), nullptr);
        EXPECT_EQ(errno, EACCES);
        EXPECT_NE(dbm_open("db", O_RDONLY, 0), nullptr);
        if (testing::Test::HasFailure()) _exit(1);
    });
    EXPECT_EQ(end.exit_status, 0) << end.out;
}

TEST(ddbm_damage, files_that_are_none) {
    support::make_folders("none.pag");
    write_file("none.dir", "\1");
    EXPECT_EQ(dbm_open("none", O_RDWR, 0), nullptr);
    EXPECT_EQ(errno, EISDIR);
    database db("none", 0, O_RDONLY);
    ASSERT_NE(db, nullptr) << "folders may be opened for reading";
    errno = 0;
    EXPECT_EQ(db.get("a"), std::nullopt);
    EXPECT_EQ(errno, EISDIR);
    EXPECT_EQ(db->flags, 1 | io_error);
    EXPECT_EQ(dbm_firstkey(db).data, nullptr);
}

// Sound databases with some bytes changed, of pages of all sizes.
TEST(ddbm_damage, bytes_changed_at_random) {
    std::mt19937 random(11);
    for (int round = 0; round < 150; ++round) {
        SCOPED_TRACE(round);
        int kb = round % 3 == 0 ? 4 : 1;
        {
            database db("db", kb);
            for (unsigned i = 0; i < 60; ++i)
                db.put("key" + std::to_string(random() % 80),
                       std::string(random() % 120, 'v'));
        }
        std::string files[] = {support::read_file("db.dir"),
                               support::read_file("db.pag")};
        for (int change = 0; change < 12; ++change) {
            std::string &file = files[random() % 4 == 0 ? 0 : 1];
            // Counts and entries are where it hurts.
            size_t at = random() % file.size();
            if (random() % 2 == 0) at = at / 1024 * 1024 + random() % 40;
            if (at < file.size()) file[at] = static_cast<char>(random());
        }
        if (round % 5 == 0) files[1].resize(random() % files[1].size());
        files[0][0] = static_cast<char>(kb);
        write_file("db.dir", files[0]);
        write_file("db.pag", files[1]);
        database db("db");
        ASSERT_NE(db, nullptr);
        support::stderr_of([&] { do_everything(&db); });
    }
}

}  // namespace
