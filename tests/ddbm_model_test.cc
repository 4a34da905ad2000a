// ddbm_model_test.cc: random operations on databases, beside a map that knows
// the answers and a model that knows the bytes of the files.
#include "support/child.h"
#include "support/database.h"
#include "support/database_model.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <map>
#include <random>

namespace {

using support::database;
using support::database_model;

struct workload {
    const char *name;
    int page_kb;
    unsigned keys;
    size_t longest_key;
    size_t longest_value;
    int operations;
};

void PrintTo(const workload &work, std::ostream *out) {
    *out << work.name;
}

// One database, its map and its model, which must agree all the time.
class trio {
  public:
    trio(const workload &work, unsigned seed)
        : work_(work),
          random_(seed),
          db_("db", work.page_kb),
          model_(work.page_kb) {
    }

    void step() {
        std::string key = random_key();
        unsigned what = random_() % 16;
        if (what < 9) return store(key, true);
        if (what < 11) return store(key, false);
        if (what < 13) return remove(key);
        if (what < 15) return fetch(key);
        if (random_() % 32 == 0) list();
    }

    void compare_files() {
        EXPECT_TRUE(support::read_file("db.dir") == model_.directory());
        EXPECT_EQ(model_.flaw_of_pages("db.pag"), "");
    }

    void reopen() {
        db_.close();
        db_.~database();
        new (&db_) database("db");
    }

    void fetch_all() {
        for (const auto &[key, value] : map_)
            EXPECT_EQ(db_.get(key), value);
    }

    void list() {
        std::vector<std::string> listed = db_.keys();
        std::sort(listed.begin(), listed.end());
        std::vector<std::string> expected;
        for (const auto &[key, value] : map_)
            expected.push_back(key);
        EXPECT_EQ(listed, expected);
    }

  private:
    std::string random_bytes(std::mt19937 *random, size_t longest) {
        std::string bytes((*random)() % (longest + 1), '\0');
        for (char &c : bytes)
            c = static_cast<char>((*random)());
        return bytes;
    }

    std::string random_key() {
        std::mt19937 own(random_() % work_.keys);
        return "k" + random_bytes(&own, work_.longest_key - 1);
    }

    void store(const std::string &key, bool replace) {
        std::string value = random_bytes(&random_, work_.longest_value);
        int expected = model_.store(key, value, replace);
        EXPECT_EQ(db_.put(key, value, replace), expected);
        EXPECT_TRUE(expected != 1 || map_.count(key) == 1);
        if (expected == 0) map_[key] = value;
    }

    void remove(const std::string &key) {
        int expected = model_.remove(key);
        EXPECT_EQ(db_.remove(key), expected);
        if (expected == 0) map_.erase(key);
    }

    void fetch(const std::string &key) {
        auto found = map_.find(key);
        std::optional<std::string> expected;
        if (found != map_.end()) expected = found->second;
        EXPECT_EQ(db_.get(key), expected);
    }

    const workload &work_;
    std::mt19937 random_;
    database db_;
    database_model model_;
    std::map<std::string, std::string> map_;
};

class ddbm_model : public testing::TestWithParam<workload> {};

TEST_P(ddbm_model, files_are_those_of_the_model) {
    const workload &work = GetParam();
    support::stderr_of([&] {
        trio all(work, 1);
        for (int i = 1; i <= work.operations && !HasFailure(); ++i) {
            all.step();
            if (i % (work.operations / 20) == 0) all.compare_files();
            if (i % (work.operations / 5) == 0) {
                all.reopen();
                all.fetch_all();
                all.list();
            }
        }
    });
}

INSTANTIATE_TEST_SUITE_P(
    random, ddbm_model,
    testing::Values(workload{"small_pairs_1", 1, 3000, 20, 60, 20000},
                    workload{"few_keys_often_replaced_1", 1, 40, 20, 300,
                             20000},
                    workload{"large_pairs_1", 1, 60, 40, 1000, 3000},
                    workload{"short_keys_1", 1, 3000, 3, 10, 10000},
                    workload{"small_pairs_4", 4, 4000, 20, 100, 12000},
                    workload{"large_pairs_4", 4, 60, 100, 4200, 3000},
                    workload{"small_pairs_64", 64, 2000, 30, 800, 3000},
                    workload{"large_pairs_64", 64, 40, 3000, 66000, 600},
                    workload{"long_keys_65", 65, 30, 5000, 30000, 600},
                    workload{"mostly_refused_255", 255, 30, 4000, 100000, 200}),
    [](const auto &row) { return row.param.name; });

}  // namespace
