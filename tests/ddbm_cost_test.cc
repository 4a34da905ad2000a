// ddbm_cost_test.cc: how many system calls the database makes.
#include "support/child.h"
#include "support/database.h"
#include "support/system_calls.h"
#include "support/tree.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <algorithm>
#include <random>

namespace {

using support::call_kind;
using support::database;

// Calls that touch the two files of a database, since the last reset.
struct traffic {
    int page_reads = 0;
    int page_writes = 0;
    int directory_reads = 0;
    int directory_writes = 0;
    int seeks = 0;
    size_t largest_read = 0;
    off_t bytes_read = 0;  // asked for
    int others = 0;
};

class ddbm_cost : public testing::Test {
  protected:
    void watch(const dbm_handle *db) {
        support::on_call = [this, at = *db](const support::system_call &call) {
            count(at, call);
            return support::goes_through;
        };
    }
    ~ddbm_cost() override {
        support::on_call = nullptr;
    }

    traffic seen;

  private:
    void count(const dbm_handle &db, const support::system_call &call) {
        bool is_page = call.descriptor == db.pag_fd;
        bool is_directory = call.descriptor == db.dir_fd;
        if (call.kind == call_kind::malloc || call.kind == call_kind::mmap)
            return;
        if (call.kind == call_kind::pread && is_page) {
            ++seen.page_reads;
            seen.largest_read = std::max(seen.largest_read, call.count);
            seen.bytes_read += static_cast<off_t>(call.count);
        } else if (call.kind == call_kind::pread && is_directory) {
            ++seen.directory_reads;
        } else if (call.kind == call_kind::pwrite && is_page) {
            ++seen.page_writes;
            EXPECT_EQ(call.count, static_cast<size_t>(db.page_size));
            EXPECT_EQ(call.offset % db.page_size, 0);
        } else if (call.kind == call_kind::pwrite && is_directory) {
            ++seen.directory_writes;
            EXPECT_EQ(call.count, 4096u);
            EXPECT_EQ(call.offset % 4096, 0);
        } else if (call.kind == call_kind::lseek) {
            ++seen.seeks;
        } else {
            ++seen.others;
        }
    }
};

TEST_F(ddbm_cost, one_page_read_and_one_page_write_a_store) {
    for (int kb : {1, 4}) {
        database db("db", kb);
        watch(db);
        std::mt19937 random(1);
        int splits = 0;
        for (int i = 0; i < 20000; ++i) {
            seen = {};
            std::string key = "key" + std::to_string(random() % 15000);
            EXPECT_EQ(db.put(key, std::string(random() % 100, 'v')), 0);
            EXPECT_LE(seen.page_reads, i == 0 ? 2 : 1);
            // A split writes both halves, one of them with the pair.
            int now = seen.directory_writes;
            EXPECT_EQ(seen.page_writes, now == 0 ? 1 : 2 * now);
            splits += now;
            EXPECT_EQ(seen.seeks + seen.others, 0);
        }
        EXPECT_GT(splits, 100);
    }
}

TEST_F(ddbm_cost, the_directory_is_read_once) {
    {
        database db("db", 1);
        for (int i = 0; i < 30000; ++i)
            db.put("key" + std::to_string(i), std::string(100, 'v'));
        EXPECT_GT(db->dir_bits, 32768) << "more than one block";
    }
    database db("db");
    watch(db);
    for (int i = 0; i < 60000; ++i) {
        int reads = seen.page_reads;
        db.get("key" + std::to_string(i));
        EXPECT_LE(seen.page_reads - reads, 1);
    }
    // The end of a file that is shorter than what was asked for shows in a
    // second call.
    EXPECT_LE(seen.directory_reads, 2);
    EXPECT_EQ(seen.page_writes + seen.directory_writes, 0);
    EXPECT_EQ(seen.seeks + seen.others, 0);
}

TEST_F(ddbm_cost, a_page_that_is_there_is_not_read_again) {
    database db("db", 1);
    db.put("key", "value");
    watch(db);
    for (int i = 0; i < 10; ++i)
        db.get("key");
    EXPECT_EQ(seen.page_reads, 0);
}

TEST_F(ddbm_cost, deleting_writes_one_page) {
    database db("db", 1);
    for (int i = 0; i < 1000; ++i)
        db.put("key" + std::to_string(i), std::string(100, 'v'));
    watch(db);
    for (int i = 0; i < 1000; ++i) {
        seen = {};
        EXPECT_EQ(db.remove("key" + std::to_string(i)), 0);
        EXPECT_LE(seen.page_reads, 1);
        EXPECT_EQ(seen.page_writes, 1);
        EXPECT_EQ(seen.directory_writes + seen.seeks + seen.others, 0);
    }
}

TEST_F(ddbm_cost, ten_splits_write_31_pages_at_most) {
    database db("db", 1);
    std::vector<std::string> keys = support::keys_of_one_hash(2);
    db.put(keys[0], std::string(900, 'v'));
    watch(db);
    support::stderr_of(
        [&] { EXPECT_EQ(db.put(keys[1], std::string(900, 'v')), -1); });
    EXPECT_LE(seen.page_writes, 31);
    EXPECT_EQ(seen.directory_writes, 10);
    EXPECT_LE(seen.page_reads, 1);
}

// Stretches of data in a file, and the bytes in them.
struct extents {
    explicit extents(int file) {
        off_t end = 0;
        for (off_t at; (at = lseek(file, end, SEEK_DATA)) != -1; ++count) {
            end = lseek(file, at, SEEK_HOLE);
            bytes += end - at;
        }
    }
    int count = 0;
    off_t bytes = 0;
};

TEST_F(ddbm_cost, iteration_reads_64_kb_at_a_time_and_no_holes) {
    database db("db", 1);
    for (int i = 0; i < 20000; ++i)
        db.put("key" + std::to_string(i), std::string(100, 'v'));
    extents data(db->pag_fd);
    watch(db);
    EXPECT_EQ(db.keys().size(), 20000u);
    EXPECT_EQ(seen.largest_read, 65536u);
    EXPECT_LE(seen.page_reads, data.bytes / 65536 + data.count + 1);
    EXPECT_LE(seen.bytes_read, data.bytes + 1024);
    EXPECT_LE(seen.seeks, 2 * data.count + 2);
}

TEST_F(ddbm_cost, iteration_follows_data_not_size) {
    support::write_file("db.dir", "\1");
    support::write_file("db.pag", "");
    int file = open("db.pag", O_RDWR);
    const off_t two_terabytes = off_t{1} << 41;
    ASSERT_EQ(ftruncate(file, two_terabytes), 0);
    std::vector<std::string> expected;
    for (off_t at = 0; at < two_terabytes; at += two_terabytes / 10) {
        expected.push_back("key" + std::to_string(at));
        std::string page = support::page_of({{expected.back(), "value"}});
        EXPECT_EQ(pwrite(file, page.data(), 1024, at / 1024 * 1024), 1024);
    }
    close(file);
    database db("db");
    watch(db);
    EXPECT_EQ(db.keys(), expected);
    EXPECT_LE(seen.page_reads, 40);
    EXPECT_LE(seen.seeks, 40);
    EXPECT_EQ(db->iter_page, INT32_MAX);
}

}  // namespace
