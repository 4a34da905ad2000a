// ddbm_test.cc: the database, sentence by sentence.
#include "support/child.h"
#include "support/database.h"
#include "support/doc.h"
#include "support/picture.h"
#include "support/tree.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <string.h>
#include <sys/stat.h>
#include <tovan/ddbm.h>
#include <unistd.h>

namespace {

using support::bytes_of;
using support::database;
using support::item_of;
using support::page_of;
using support::read_file;
using support::write_file;

constexpr int io_error = 2;

std::string text(size_t length, char c = 'v') {
    return std::string(length, c);
}

// A key of this length whose hash has these lowest bits.
std::string key_with(uint32_t bits, int count, size_t length = 8) {
    uint32_t mask = (1u << count) - 1;
    for (unsigned i = 0;; ++i) {
        std::string key = std::to_string(i);
        key.insert(0, length - 1 - key.size(), 'k');
        uint32_t hash = dbm_hash(key.data(), static_cast<int>(length) - 1);
        uint32_t last = (bits - 65599 * hash) & mask;
        if (last < 128) return key + static_cast<char>(last);
    }
}

int open_descriptors() {
    int count = 0;
    for (int i = 0; i < 256; ++i)
        count += fcntl(i, F_GETFD) != -1;
    return count;
}

size_t size_of(const std::string &path) {
    struct stat status;
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return static_cast<size_t>(status.st_size);
}

// ---- the hash ----------------------------------------------------------

TEST(dbm_hash, known_values) {
    struct {
        std::string key;
        uint32_t hash;
    } rows[] = {
        {"", 0},
        {"a", 97},
        {"ab", 98 + 65599u * 97},
        {"\x7f", 127},
        {"\x80", 0xffffff80},
        {"\xff", 0xffffffff},
        {"\xff\xff", 0xffffffff + 65599u * 0xffffffff},
        {std::string(1, '\0'), 0},
        {std::string("\1\0", 2), 65599},
    };
    for (const auto &row : rows) {
        int length = static_cast<int>(row.key.size());
        EXPECT_EQ(dbm_hash(row.key.data(), length), row.hash);
    }
}

TEST(dbm_hash, no_length_hashes_to_0) {
    EXPECT_EQ(dbm_hash("a", 0), 0u);
    EXPECT_EQ(dbm_hash("a", -1), 0u);
    EXPECT_EQ(dbm_hash(nullptr, 0), 0u);
}

// ---- opening and closing -----------------------------------------------

TEST(dbm_open, makes_two_files_with_pages_of_1_kb) {
    dbm_handle *db = dbm_open("new", O_RDWR | O_CREAT, 0640);
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(read_file("new.dir"), "\1");
    EXPECT_EQ(read_file("new.pag"), "");
    EXPECT_EQ(db->page_size, 1024);
    dbm_close(db);
}

TEST(dbm_open, takes_the_page_size_of_an_existing_database) {
    write_file("old.dir", "\4");
    write_file("old.pag", "");
    dbm_handle *db = dbm_open("old", O_RDWR, 0);
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(db->page_size, 4096);
    dbm_close(db);
}

TEST(dbm_open, refuses_no_name) {
    for (const char *base : {static_cast<const char *>(nullptr), ""}) {
        errno = 0;
        EXPECT_EQ(dbm_open(base, O_RDWR | O_CREAT, 0666), nullptr);
        EXPECT_EQ(errno, EINVAL);
    }
}

TEST(dbm_open, a_name_may_be_long) {
    std::string folder = text(200, 'd');
    support::make_folders(folder + "/" + folder);
    std::string base = folder + "/" + folder + "/" + text(200, 'n');
    dbm_handle *db = dbm_open(base.c_str(), O_RDWR | O_CREAT, 0666);
    ASSERT_NE(db, nullptr);
    dbm_close(db);
    EXPECT_TRUE(support::file_exists(base + ".pag"));
}

TEST(dbm_prep, sets_up_the_handle) {
    database db("new", 3);
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(db->flags, 0);
    EXPECT_EQ(db->dir_bits, 0);
    EXPECT_EQ(db->hash_mask, 0u);
    EXPECT_EQ(db->iter_page, 0);
    EXPECT_EQ(db->iter_key, 0);
    EXPECT_EQ(db->dir_block_no, -1);
    EXPECT_EQ(db->page_no, -1);
    EXPECT_EQ(db->page_size, 3072);
    EXPECT_EQ(db->split_new, nullptr);
    EXPECT_EQ(db->split_copy, nullptr);
    EXPECT_EQ(db->page, reinterpret_cast<unsigned char *>(db + 1));
    EXPECT_EQ(std::string(reinterpret_cast<char *>(db->page), 3072),
              text(3072, 0));
    EXPECT_EQ(std::string(reinterpret_cast<char *>(db->dir_block), 4096),
              text(4096, 0));
}

TEST(dbm_prep, page_sizes_from_1_to_255_kb) {
    for (int kb : {1, 2, 64, 65, 255}) {
        { database created("db", kb); }
        EXPECT_EQ(read_file("db.dir"), std::string(1, static_cast<char>(kb)));
        database db("db");
        ASSERT_NE(db, nullptr) << kb;
        EXPECT_EQ(db->page_size, kb * 1024);
    }
}

TEST(dbm_prep, a_refused_page_size_leaves_the_directory_file_open) {
    for (int kb : {0, -1, 256, 1 << 30}) {
        int before = open_descriptors();
        errno = 0;
        EXPECT_EQ(dbm_prep("d", "p", kb, O_RDWR | O_CREAT, 0666), nullptr);
        EXPECT_EQ(errno, EINVAL) << kb;
        EXPECT_EQ(open_descriptors(), before + 1) << kb;
        EXPECT_EQ(read_file("d"), "");
        EXPECT_FALSE(support::file_exists("p"));
    }
}

TEST(dbm_prep, the_page_size_is_not_looked_at_without_creation) {
    { database created("db", 2); }
    dbm_handle *db = dbm_prep("db.dir", "db.pag", 999, O_RDWR, 0);
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(db->page_size, 2048);
    dbm_close(db);
}

TEST(dbm_prep, directories_that_say_nothing_are_refused) {
    write_file("db.pag", "");
    for (const std::string &content : {std::string(), text(1, 0)}) {
        write_file("db.dir", content);
        int before = open_descriptors();
        errno = 0;
        EXPECT_EQ(dbm_open("db", O_RDWR, 0), nullptr);
        EXPECT_EQ(errno, EINVAL);
        EXPECT_EQ(open_descriptors(), before);
    }
}

TEST(dbm_prep, reports_what_cannot_be_opened) {
    int before = open_descriptors();
    EXPECT_EQ(dbm_open("none", O_RDWR, 0), nullptr);
    EXPECT_EQ(errno, ENOENT);
    write_file("half.dir", "\1");
    EXPECT_EQ(dbm_open("half", O_RDWR, 0), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(dbm_prep(".", "p", 1, O_RDONLY, 0), nullptr);
    EXPECT_EQ(errno, EISDIR);
    EXPECT_EQ(dbm_prep(nullptr, "p", 1, O_RDONLY, 0), nullptr);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(dbm_prep("half.dir", nullptr, 1, O_RDONLY, 0), nullptr);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(open_descriptors(), before);
}

TEST(dbm_prep, a_page_size_that_cannot_be_written_fails) {
    write_file("db.dir", "\1");
    int before = open_descriptors();
    EXPECT_EQ(dbm_open("db", O_RDONLY | O_CREAT, 0666), nullptr);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(open_descriptors(), before);
}

TEST(dbm_prep, counts_the_directory_bits) {
    write_file("db.pag", "");
    for (size_t size : {1, 2, 4095, 4096, 4097, 8192}) {
        write_file("db.dir", "\1" + text(size - 1, 0));
        database db("db");
        ASSERT_NE(db, nullptr);
        EXPECT_EQ(db->dir_bits, static_cast<int>(size - 1) * 8);
    }
}

TEST(dbm_prep, write_only_is_taken_as_read_and_write) {
    database db("db", 1, O_WRONLY);
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(fcntl(db->dir_fd, F_GETFL) & O_ACCMODE, O_RDWR);
    EXPECT_EQ(fcntl(db->pag_fd, F_GETFL) & O_ACCMODE, O_RDWR);
    EXPECT_EQ(db.put("k", "v"), 0);
    EXPECT_EQ(db.get("k"), "v");
}

TEST(dbm_prep, appending_is_ignored) {
    database db("db", 1, O_RDWR | O_APPEND);
    db.put("a", "1");
    db.put("b", "2");
    EXPECT_EQ(read_file("db.pag"), page_of({{"a", "1"}, {"b", "2"}}));
}

TEST(dbm_prep, descriptors_are_close_on_exec) {
    database db("db", 1);
    EXPECT_EQ(fcntl(db->dir_fd, F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(fcntl(db->pag_fd, F_GETFD), FD_CLOEXEC);
}

TEST(dbm_prep, gives_new_files_the_mode) {
    umask(0);
    dbm_handle *db = dbm_open("mode", O_RDWR | O_CREAT, 0640);
    dbm_close(db);
    for (const char *name : {"mode.dir", "mode.pag"}) {
        struct stat status;
        stat(name, &status);
        EXPECT_EQ(status.st_mode & 0777, 0640u) << name;
    }
}

TEST(dbm_prep, creation_over_a_database_takes_its_directory_as_empty) {
    {
        database db("db", 1);
        for (int i = 0; i < 100; ++i)
            db.put("key" + std::to_string(i), text(20));
    }
    size_t size = size_of("db.dir");
    EXPECT_EQ(size, 4096u);
    dbm_handle *db = dbm_prep("db.dir", "db.pag", 1, O_RDWR | O_CREAT, 0);
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(db->dir_bits, 0);
    EXPECT_EQ(size_of("db.dir"), size);
    std::string split_off = key_with(1, 1);
    dbm_fetch(db, item_of(split_off));
    EXPECT_EQ(db->page_no, 0);
    dbm_close(db);
}

TEST(dbm_close, closes_and_releases) {
    int before = open_descriptors();
    database db("db", 1);
    for (int i = 0; i < 100; ++i)
        db.put("key" + std::to_string(i), text(20));
    EXPECT_NE(db->split_new, nullptr);
    db.keys();
    db.close();
    EXPECT_EQ(open_descriptors(), before);
}

TEST(dbm_handle, null_is_refused_everywhere) {
    dbm_datum key = item_of("key");
    auto expect_refused = [](auto call) {
        errno = 0;
        call();
        EXPECT_EQ(errno, EINVAL);
    };
    expect_refused([] { dbm_close(nullptr); });
    expect_refused([] { EXPECT_EQ(dbm_firstkey(nullptr).data, nullptr); });
    expect_refused([] { EXPECT_EQ(dbm_nextkey(nullptr).data, nullptr); });
    expect_refused([&] { EXPECT_EQ(dbm_fetch(nullptr, key).data, nullptr); });
    expect_refused([&] { EXPECT_EQ(dbm_alfetch(nullptr, key).data, nullptr); });
    expect_refused([&] { EXPECT_EQ(dbm_store(nullptr, key, key, 1), -1); });
    expect_refused([&] { EXPECT_EQ(dbm_delete(nullptr, key), -1); });
}

// ---- storing -----------------------------------------------------------

TEST(dbm_store, lays_pairs_out_from_the_end_of_page_0) {
    database db("db", 1);
    EXPECT_EQ(db.put("one", "1"), 0);
    EXPECT_EQ(db.put("three", "333"), 0);
    EXPECT_EQ(db.put("two", ""), 0);
    std::string page = page_of({{"one", "1"}, {"three", "333"}, {"two", ""}});
    EXPECT_EQ(page.substr(1024 - 15), "two333three1one");
    EXPECT_EQ(read_file("db.pag"), page);
    EXPECT_EQ(read_file("db.dir"), "\1");
    EXPECT_EQ(db->page_no, 0);
    EXPECT_EQ(db->cur_bit, 0);
    EXPECT_EQ(db->hash_mask, 0u);
}

TEST(dbm_store, keys_and_values_are_any_bytes) {
    database db("db", 1);
    std::string all;
    for (int i = 0; i < 256; ++i)
        all += static_cast<char>(i);
    EXPECT_EQ(db.put(all, all + all), 0);
    EXPECT_EQ(db.put(text(1, 0), ""), 0);
    EXPECT_EQ(db.get(all), all + all);
    EXPECT_EQ(db.get(text(1, 0)), "");
    EXPECT_EQ(db.get(text(2, 0)), std::nullopt);
}

TEST(dbm_store, insert_keeps_what_is_there) {
    database db("db", 1);
    for (int mode : {0, 2, -1}) {
        EXPECT_EQ(db.put("key", "old", mode), mode == 0 ? 0 : 1);
        EXPECT_EQ(db.put("key", "new", mode), 1);
        EXPECT_EQ(db.get("key"), "old");
    }
    EXPECT_EQ(read_file("db.pag"), page_of({{"key", "old"}}));
}

TEST(dbm_store, a_replaced_pair_moves_behind_the_others) {
    database db("db", 1);
    db.put("a", "1");
    db.put("b", "2");
    EXPECT_EQ(db.put("a", "3"), 0);
    EXPECT_EQ(read_file("db.pag"), page_of({{"b", "2"}, {"a", "3"}}));
    EXPECT_EQ(db.keys(), (std::vector<std::string>{"b", "a"}));
}

TEST(dbm_store, refuses_what_is_no_pair) {
    database db("db", 1);
    char bytes[] = "bytes";
    struct {
        const char *what;
        dbm_datum key;
        dbm_datum value;
    } rows[] = {
        {"no key", {nullptr, 0}, {bytes, 1}},
        {"no key but a length", {nullptr, 3}, {bytes, 1}},
        {"empty key", {bytes, 0}, {bytes, 1}},
        {"negative key", {bytes, -1}, {bytes, 1}},
        {"negative value", {bytes, 1}, {bytes, -1}},
        {"most negative value", {bytes, 1}, {bytes, INT32_MIN}},
        {"no value but a length", {bytes, 1}, {nullptr, 1}},
        {"lengths that wrap", {bytes, INT32_MAX}, {bytes, INT32_MAX}},
    };
    for (const auto &row : rows) {
        errno = 0;
        EXPECT_EQ(dbm_store(db, row.key, row.value, 1), -1) << row.what;
        EXPECT_EQ(errno, EINVAL) << row.what;
    }
    EXPECT_EQ(db->flags, 0);
    EXPECT_EQ(db->page_no, -1);
    EXPECT_EQ(read_file("db.pag"), "");
}

TEST(dbm_store, a_value_without_bytes_needs_no_pointer) {
    database db("db", 1);
    EXPECT_EQ(dbm_store(db, item_of("key"), {nullptr, 0}, 1), 0);
    EXPECT_EQ(db.get("key"), "");
}

TEST(dbm_store, the_largest_pair_fills_its_page) {
    for (int kb : {1, 4, 64}) {
        size_t page = static_cast<size_t>(kb) * 1024;
        database db("db", kb);
        EXPECT_EQ(db.put("key", text(page - 6 - 3)), 0);
        EXPECT_EQ(db.get("key"), text(page - 6 - 3));
        EXPECT_EQ(read_file("db.pag"),
                  page_of({{"key", text(page - 9)}}, page));
        EXPECT_EQ(db.put(text(page - 6, 'k'), ""), 0) << "another page";
        EXPECT_EQ(db.get(text(page - 6, 'k')), "");
    }
}

TEST(dbm_store, larger_pairs_are_refused_before_any_change) {
    for (int kb : {1, 4, 64}) {
        size_t page = static_cast<size_t>(kb) * 1024;
        database db("db", kb);
        for (size_t size : {page - 5, page - 4, page - 3, page, 2 * page}) {
            errno = 0;
            EXPECT_EQ(db.put("key", text(size - 3)), -1);
            EXPECT_EQ(errno, EINVAL) << size;
        }
        EXPECT_EQ(db->page_no, -1);
        EXPECT_EQ(db->flags, 0);
        EXPECT_EQ(read_file("db.pag"), "");
    }
}

TEST(dbm_store, read_only_databases_are_not_changed) {
    {
        database db("db", 1);
        db.put("key", "value");
    }
    std::string before = read_file("db.pag");
    database db("db", 0, O_RDONLY);
    EXPECT_EQ(db->flags, 1);
    for (const char *key : {"key", "other"}) {
        errno = 0;
        EXPECT_EQ(db.put(key, "new"), -1);
        EXPECT_EQ(errno, EPERM);
        errno = 0;
        EXPECT_EQ(db.remove(key), -1);
        EXPECT_EQ(errno, EPERM);
    }
    EXPECT_EQ(db.get("key"), "value");
    EXPECT_EQ(db->flags, 1);
    EXPECT_EQ(read_file("db.pag"), before);
}

// ---- splitting ---------------------------------------------------------

TEST(dbm_store, the_first_split_writes_page_1_and_a_directory_block) {
    database db("db", 1);
    std::string even = key_with(0, 1);
    std::string odd = key_with(1, 1);
    db.put(even, text(500, 'e'));
    db.put(odd, text(490, 'o'));
    EXPECT_EQ(size_of("db.pag"), 1024u);
    EXPECT_EQ(size_of("db.dir"), 1u);
    std::string more = key_with(1, 1, 9);
    EXPECT_EQ(db.put(more, text(100, 'm')), 0);
    EXPECT_EQ(read_file("db.pag"),
              page_of({{even, text(500, 'e')}}) +
                  page_of({{odd, text(490, 'o')}, {more, text(100, 'm')}}));
    EXPECT_EQ(read_file("db.dir"), "\1\1" + text(4094, 0));
    EXPECT_EQ(db->page_no, 1);
    EXPECT_EQ(db->cur_bit, 0);
    EXPECT_EQ(db->hash_mask, 0u);
    EXPECT_EQ(db->dir_bits, 32768);
    EXPECT_EQ(db->dir_block_no, 0);
    EXPECT_EQ(memcmp(db->dir_block, "\1\1", 3), 0);
    EXPECT_EQ(db.get(odd), text(490, 'o'));
    EXPECT_EQ(db->cur_bit, 2);
    EXPECT_EQ(db->hash_mask, 1u);
}

TEST(dbm_store, splits_until_the_pair_fits) {
    database db("db", 1);
    std::string first = key_with(0, 3);
    std::string second = key_with(4, 3);
    db.put(first, text(600));
    EXPECT_EQ(db.put(second, text(600)), 0);
    EXPECT_EQ(read_file("db.pag"), page_of({{first, text(600)}}) + page_of({}) +
                                       page_of({}) + text(1024, 0) +
                                       page_of({{second, text(600)}}));
    // Bits 0, 1 and 3 are set.
    EXPECT_EQ(read_file("db.dir"), "\1\x0b" + text(4094, 0));
    EXPECT_EQ(db->page_no, 4);
    EXPECT_EQ(db->cur_bit, 3);
    EXPECT_EQ(db->hash_mask, 3u);
}

TEST(dbm_store, gives_up_after_ten_splits) {
    database db("db", 1);
    std::string first = key_with(0, 12);
    std::string second = key_with(0, 12, 9);
    db.put(first, text(600));
    int result = 0;
    std::string message =
        support::stderr_of([&] { result = db.put(second, text(600)); });
    EXPECT_EQ(result, -1);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(message, "glaibri: cannot insert after SPLTMAX attempts.\n");
    EXPECT_EQ(message.size(), 47u);
    EXPECT_EQ(db->flags, io_error);
    EXPECT_EQ(db->hash_mask, 1023u);
    EXPECT_EQ(db->cur_bit, 1023);
    EXPECT_EQ(db.get(first), text(600));
    EXPECT_EQ(db.get(second), std::nullopt);
    // The next attempt starts where this one ended.
    EXPECT_EQ(db.put(second, text(600)), 0);
    EXPECT_EQ(db.get(first), text(600));
    EXPECT_EQ(db.get(second), text(600));
}

TEST(dbm_store, keys_of_one_hash_share_a_page_until_it_is_full) {
    database db("db", 1);
    std::vector<std::string> keys = support::keys_of_one_hash(12);
    size_t room = 1022 / (4 + keys[0].size() + 60);
    ASSERT_LT(room, keys.size());
    for (size_t i = 0; i < room; ++i)
        EXPECT_EQ(db.put(keys[i], text(60)), 0);
    std::string message = support::stderr_of(
        [&] { EXPECT_EQ(db.put(keys[room], text(60)), -1); });
    EXPECT_EQ(message.size(), 47u);
    for (size_t i = 0; i < room; ++i)
        EXPECT_EQ(db.get(keys[i]), text(60));
}

TEST(dbm_store, splitting_ends_where_page_numbers_end) {
    database db("db", 1);
    std::vector<std::string> keys = support::keys_of_one_hash(2);
    db.put(keys[0], text(900));
    std::string message = support::stderr_of([&] {
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(db.put(keys[1], text(900)), -1);
            EXPECT_EQ(errno, ENOSPC);
        }
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(db.put(keys[1], text(900)), -1);
            EXPECT_EQ(errno, EFBIG);
        }
    });
    EXPECT_EQ(message.size(), 3 * 47u);
    EXPECT_EQ(db->hash_mask, 0x7fffffffu);
    EXPECT_EQ(db.get(keys[0]), text(900));
    EXPECT_EQ(db.get(keys[1]), std::nullopt);
    EXPECT_GE(db->dir_bits, 1 << 30);
    database again("db");
    EXPECT_EQ(again.get(keys[0]), text(900));
    EXPECT_GE(again->dir_bits, 1 << 30);
    EXPECT_EQ(again.keys(), std::vector<std::string>{keys[0]});
}

TEST(dbm_store, a_replacement_that_splits_counts_without_the_old_pair) {
    database db("db", 1);
    std::string even = key_with(0, 1);
    std::string odd = key_with(1, 1);
    db.put(even, text(400, 'e'));
    db.put(odd, text(400, 'o'));
    EXPECT_EQ(db.put(odd, text(590, 'n')), 0);
    EXPECT_EQ(size_of("db.pag"), 1024u) << "fits once the old pair is gone";
    EXPECT_EQ(db.put(odd, text(900, 'N')), 0);
    EXPECT_EQ(read_file("db.pag"), page_of({{even, text(400, 'e')}}) +
                                       page_of({{odd, text(900, 'N')}}));
}

TEST(dbm_store, a_replacement_that_fails_keeps_the_old_pair) {
    database db("db", 1);
    std::string one = key_with(0, 13);
    std::string two = key_with(0, 13, 9);
    db.put(one, text(400, '1'));
    db.put(two, text(400, '2'));
    support::stderr_of([&] { EXPECT_EQ(db.put(one, text(900)), -1); });
    EXPECT_EQ(db.get(one), text(400, '1'));
    EXPECT_EQ(db.get(two), text(400, '2'));
    database again("db");
    EXPECT_EQ(again.get(one), text(400, '1'));
    EXPECT_EQ(again.get(two), text(400, '2'));
}

TEST(dbm_store, pairs_deep_in_the_directory_stay_in_reach) {
    // Splits go down ten levels at a time, past what one growth of the
    // directory covers.
    database db("db", 1);
    std::string first = key_with(0xfffff, 20);
    std::string second = key_with(0xfffff, 20, 9);
    db.put(first, text(600));
    support::stderr_of([&] {
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(db.put(second, text(600)), -1);
    });
    EXPECT_EQ(db.get(first), text(600));
    EXPECT_EQ(db->page_no, 0xfffff);
    EXPECT_GT(db->dir_bits, 0xffffe);
    database again("db");
    EXPECT_EQ(again.get(first), text(600));
}

// ---- pages above 64 KB -------------------------------------------------

TEST(dbm_store, offsets_beyond_65535_are_refused) {
    for (int kb : {65, 255}) {
        size_t page = static_cast<size_t>(kb) * 1024;
        database db("db", kb);
        size_t least = page - 65535;
        errno = 0;
        EXPECT_EQ(db.put(text(least - 1, 'k'), "v"), -1);
        EXPECT_EQ(errno, EINVAL);
        EXPECT_EQ(db.put("key", "value"), -1);
        EXPECT_EQ(read_file("db.pag"), "");
        EXPECT_EQ(db->flags, 0);
        EXPECT_EQ(db.put(text(least, 'k'), "first"), 0);
        EXPECT_EQ(db.put("key", "value"), 0) << "behind a long key";
        EXPECT_EQ(db.get("key"), "value");
        EXPECT_EQ(db.get(text(least, 'k')), "first");
    }
}

TEST(dbm_store, offsets_that_a_removal_would_lift_beyond_65535_are_refused) {
    database db("db", 65);
    std::string first = text(1025, 'k');
    db.put(first, "first");
    db.put("key", "value");
    std::string before = read_file("db.pag");
    errno = 0;
    EXPECT_EQ(db.remove(first), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(db.put(first, "other"), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(read_file("db.pag"), before);
    EXPECT_EQ(db.get("key"), "value");
    EXPECT_EQ(db->flags, 0);
    EXPECT_EQ(db.remove("key"), 0);
    EXPECT_EQ(db.remove(first), 0);
}

TEST(dbm_store, halves_whose_offsets_would_pass_65535_are_refused) {
    database db("db", 65);
    std::string first = key_with(0, 1, 1025);
    std::string second = key_with(1, 1);
    db.put(first, text(40000));
    db.put(second, text(20000));
    std::string before = read_file("db.pag");
    errno = 0;
    EXPECT_EQ(db.put(key_with(1, 1, 9), text(20000)), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(read_file("db.pag"), before);
    EXPECT_EQ(read_file("db.dir"), "\x41");
    EXPECT_EQ(db.get(first), text(40000));
    EXPECT_EQ(db.get(second), text(20000));
    EXPECT_EQ(db->flags, 0);
}

// ---- fetching and deleting ---------------------------------------------

TEST(dbm_fetch, refuses_what_is_no_key) {
    database db("db", 1);
    char bytes[] = "k";
    for (dbm_datum key : {dbm_datum{nullptr, 0}, dbm_datum{nullptr, 1},
                          dbm_datum{bytes, 0}, dbm_datum{bytes, -1}}) {
        errno = 0;
        dbm_datum value = dbm_fetch(db, key);
        EXPECT_EQ(value.data, nullptr);
        EXPECT_EQ(value.length, 0);
        EXPECT_EQ(errno, EINVAL);
        errno = 0;
        EXPECT_EQ(dbm_delete(db, key), -1);
        EXPECT_EQ(errno, EINVAL);
    }
    EXPECT_EQ(db->flags, 0);
}

TEST(dbm_fetch, gives_the_place_in_the_page) {
    database db("db", 1);
    db.put("key", "value");
    dbm_datum value = dbm_fetch(db, item_of("key"));
    EXPECT_EQ(value.data, reinterpret_cast<char *>(db->page) + 1024 - 8);
    EXPECT_EQ(value.length, 5);
}

TEST(dbm_fetch, what_is_not_there_is_no_error) {
    database db("db", 1);
    db.put("key", "value");
    errno = 0;
    for (const std::string &key : {std::string("ke"), std::string("keys"),
                                   std::string("kez"), text(5000)})
        EXPECT_EQ(db.get(key), std::nullopt);
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(db->flags, 0);
}

TEST(dbm_delete, moves_later_items_up) {
    database db("db", 1);
    db.put("a", "1");
    db.put("bb", "22");
    db.put("ccc", "333");
    EXPECT_EQ(db.remove("a"), 0);
    std::string page = read_file("db.pag");
    std::string expected = page_of({{"bb", "22"}, {"ccc", "333"}});
    // What the moved items and the last entries were stays behind.
    EXPECT_EQ(page.substr(0, 10), expected.substr(0, 10));
    EXPECT_EQ(page.substr(1014), expected.substr(1014));
    EXPECT_EQ(page.substr(1012, 2), "33");
    EXPECT_EQ(page.substr(10, 4), "\x03\xf7\x03\xf4");
    EXPECT_EQ(db.remove("a"), -1);
    EXPECT_EQ(db->flags, 0);
    EXPECT_EQ(db.get("bb"), "22");
    EXPECT_EQ(db.get("ccc"), "333");
}

TEST(dbm_delete, the_last_pair_leaves_everything_but_the_count) {
    database db("db", 1);
    db.put("a", "1");
    db.put("b", "2");
    std::string before = read_file("db.pag");
    EXPECT_EQ(db.remove("b"), 0);
    before[1] = 2;
    EXPECT_EQ(read_file("db.pag"), before);
    EXPECT_EQ(db.remove("a"), 0);
    before[1] = 0;
    EXPECT_EQ(read_file("db.pag"), before);
    EXPECT_EQ(db.keys(), std::vector<std::string>{});
}

TEST(dbm_alfetch, values_lie_at_multiples_of_4) {
    database db("db", 1);
    for (size_t i = 0; i < 9; ++i) {
        std::string key(i + 1, 'k');
        std::string value(i * 7, 'v');
        db.put(key, value);
        dbm_datum found = dbm_alfetch(db, item_of(key));
        EXPECT_EQ(bytes_of(found), value);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(found.data) % 4, 0u);
    }
}

TEST(dbm_alfetch, a_value_that_lies_right_is_not_copied) {
    database db("db", 1);
    db.put("four", "valu");
    EXPECT_EQ(dbm_alfetch(db, item_of("four")).data,
              dbm_fetch(db, item_of("four")).data);
    db.put("k", "v");
    dbm_datum copied = dbm_alfetch(db, item_of("k"));
    EXPECT_NE(copied.data, dbm_fetch(db, item_of("k")).data);
    db.put("kk", "w");
    dbm_fetch(db, item_of("kk"));
    EXPECT_EQ(bytes_of(copied), "v") << "good until the next copy";
}

TEST(dbm_alfetch, values_may_be_longer_than_1024_bytes) {
    database db("db", 64);
    for (size_t size : {1023, 1024, 1025, 4001, 60001}) {
        std::string key = "key" + std::to_string(size);
        db.put(key, text(size));
        EXPECT_EQ(bytes_of(dbm_alfetch(db, item_of(key))), text(size));
    }
}

TEST(dbm_alfetch, finds_nothing_as_fetch_does) {
    database db("db", 1);
    EXPECT_EQ(dbm_alfetch(db, item_of("none")).data, nullptr);
    errno = 0;
    EXPECT_EQ(dbm_alfetch(db, {nullptr, 0}).data, nullptr);
    EXPECT_EQ(errno, EINVAL);
}

// ---- iteration ---------------------------------------------------------

TEST(dbm_firstkey, an_empty_database_has_none) {
    database db("db", 1);
    errno = 0;
    EXPECT_EQ(dbm_firstkey(db).data, nullptr);
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(db->flags, io_error);
}

TEST(dbm_nextkey, keys_come_in_the_order_of_the_file) {
    database db("db", 1);
    std::string even = key_with(0, 1), odd = key_with(1, 1);
    std::string even2 = key_with(0, 1, 9), odd2 = key_with(1, 1, 9);
    for (const std::string &key : {odd, even, odd2, even2})
        db.put(key, text(300));
    EXPECT_EQ(db.keys(), (std::vector<std::string>{even, even2, odd, odd2}));
    EXPECT_EQ(db.keys(), (std::vector<std::string>{even, even2, odd, odd2}));
}

TEST(dbm_nextkey, the_end_of_the_iteration_looks_like_a_failure) {
    database db("db", 1);
    db.put("key", "value");
    EXPECT_EQ(bytes_of(dbm_firstkey(db)), "key");
    EXPECT_EQ(db->iter_page, 0);
    EXPECT_EQ(db->iter_key, 1);
    EXPECT_EQ(db->page_no, 0);
    errno = 0;
    EXPECT_EQ(dbm_nextkey(db).data, nullptr);
    EXPECT_EQ(db->flags, io_error);
    EXPECT_EQ(db->iter_page, 1);
    EXPECT_EQ(db->iter_key, 0);
    EXPECT_EQ(db->page_no, -1);
    EXPECT_EQ(errno, 0) << "tells the end from an error";
    EXPECT_EQ(dbm_nextkey(db).data, nullptr);
    EXPECT_EQ(bytes_of(dbm_firstkey(db)), "key") << "and again";
    EXPECT_EQ(db.put("other", "value"), 0);
}

TEST(dbm_nextkey, fetching_between_two_steps_does_no_harm) {
    database db("db", 1);
    std::vector<std::string> all;
    for (int i = 0; i < 200; ++i)
        db.put("key" + std::to_string(i), text(20));
    std::vector<std::string> expected = db.keys();
    EXPECT_EQ(expected.size(), 200u);
    int i = 0;
    dbm_datum key = dbm_firstkey(db);
    for (; key.data != nullptr; key = dbm_nextkey(db)) {
        all.push_back(*bytes_of(key));
        EXPECT_EQ(db.get("key" + std::to_string(i++)), text(20));
    }
    EXPECT_EQ(all, expected);
}

TEST(dbm_nextkey, holes_and_empty_pages_are_passed_over) {
    write_file("db.dir", "\1");
    write_file("db.pag", "");
    int file = open("db.pag", O_RDWR);
    std::string first = page_of({{"a", "1"}, {"b", "2"}});
    std::string second = page_of({{"c", "3"}});
    EXPECT_EQ(pwrite(file, first.data(), 1024, 2048), 1024);
    EXPECT_EQ(pwrite(file, second.data(), 1024, 1024 * 100000), 1024);
    EXPECT_EQ(ftruncate(file, 1024 * 200000), 0);
    close(file);
    database db("db");
    EXPECT_EQ(db.keys(), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(db->iter_page, 200000);
}

TEST(dbm_nextkey, a_last_page_that_is_cut_counts_with_zeros) {
    database db("db", 1);
    db.put(key_with(0, 1), text(600));
    db.put(key_with(1, 1), text(600));
    db.close();
    EXPECT_EQ(truncate("db.pag", 1025), 0);
    database cut("db");
    EXPECT_EQ(cut.keys(), std::vector<std::string>{key_with(0, 1)});
    EXPECT_EQ(cut->iter_page, 2);
}

TEST(dbm_nextkey, page_sizes_above_the_read_ahead_work) {
    for (int kb : {48, 63, 64}) {
        database db("db", kb);
        size_t size = static_cast<size_t>(kb) * 1024;
        for (int i = 0; i < 20; ++i)
            db.put("key" + std::to_string(i), text(size / 3));
        EXPECT_EQ(db.keys().size(), 20u) << kb;
    }
}

// ---- the documented example ---------------------------------------------

const char documented[] = "formats/database.md";

std::string drawn(const std::string &file) {
    return support::drawn_bytes(support::doc_block(documented, file));
}

TEST(database_page, the_example_is_what_storing_writes) {
    database db("db", 1);
    db.put("apple", "red");
    db.put("cherry", "dark");
    EXPECT_EQ(size_of("db.pag"), 1024u);
    db.put("fig", text(1000, 0));
    EXPECT_EQ(drawn("dir"), read_file("db.dir"));
    EXPECT_EQ(drawn("pag"), read_file("db.pag"));
}

TEST(database_page, the_example_can_be_read) {
    write_file("db.dir", drawn("dir"));
    write_file("db.pag", drawn("pag"));
    database db("db");
    EXPECT_EQ(db.get("apple"), "red");
    EXPECT_EQ(db.get("cherry"), "dark");
    EXPECT_EQ(db.get("fig"), text(1000, 0));
    EXPECT_EQ(db.keys(), (std::vector<std::string>{"apple", "fig", "cherry"}));
}

TEST(database_page, the_hashes_are_those_of_the_keys) {
    auto rows = support::doc_table(documented, "| key | hash | lowest bit |");
    EXPECT_EQ(rows.size(), 3u);
    for (const auto &row : rows) {
        int length = static_cast<int>(row[0].size());
        uint32_t hash = dbm_hash(row[0].data(), length);
        EXPECT_EQ(std::stoul(row[1], nullptr, 16), hash) << row[0];
        EXPECT_EQ(row[2], std::to_string(hash & 1)) << row[0];
    }
}

TEST(database_page, the_bytes_are_where_the_table_says) {
    auto rows =
        support::doc_table(documented, "| file, offset | bytes | meaning |");
    for (const auto &row : rows) {
        size_t at = std::stoul(row[0].substr(4), nullptr, 16);
        std::string bytes = support::drawn_bytes("0:" + row[1]);
        EXPECT_EQ(drawn(row[0].substr(0, 3)).substr(at, bytes.size()), bytes)
            << row[0];
    }
}

}  // namespace
