// ddbm_crash_test.cc: the process that changes a database dies; what it was
// told is stored must be there.
//
// Twice: processes are killed at random moments, and every beginning of a
// recorded sequence of writes is looked at as if the process had died there.
// TOVAN_KILLS in the environment is the number of kills for each page size.
#include "support/database.h"
#include "support/system_calls.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <map>
#include <random>
#include <set>

namespace {

using support::database;
using value = std::optional<std::string>;

// One change; without a value it removes the key.
struct change {
    std::string key;
    value bytes;
};

// A sequence of changes, each known by its number alone.
struct history {
    unsigned seed;
    unsigned keys;
    unsigned longest_value;

    change number(unsigned i) const {
        std::mt19937 random(seed * 1000003 + i);
        std::string key = "key" + std::to_string(random() % keys);
        if (random() % 8 == 0) return {key, std::nullopt};
        std::string bytes = std::to_string(i) + " ";
        bytes.resize(bytes.size() + random() % longest_value, 'v');
        return {key, bytes};
    }
};

bool make(const change &made, database *db) {
    if (made.bytes) return db->put(made.key, *made.bytes) == 0;
    db->remove(made.key);
    return (db->operator->()->flags & 2) == 0;
}

// Keys whose pages lie together come together.
uint32_t reversed_hash(const std::string &key) {
    uint32_t hash = dbm_hash(key.data(), static_cast<int>(key.size()));
    uint32_t reversed = 0;
    for (int i = 0; i < 32; ++i)
        reversed = reversed << 1 | (hash >> i & 1);
    return reversed;
}

// What a database holds after the first n changes of a history, with change
// number n under way.
class expectation {
  public:
    void confirm(const change &made) {
        held_[{reversed_hash(made.key), made.key}] = made.bytes;
    }

    // The key whose answer differs; an empty text when none does.
    std::string flaw_of(database *db, const change &under_way) const {
        for (const auto &[key, bytes] : held_) {
            value found = db->get(key.second);
            if (found == bytes) continue;
            if (key.second != under_way.key || found != under_way.bytes)
                return key.second;
        }
        return "";
    }

  private:
    std::map<std::pair<uint32_t, std::string>, value> held_;
};

// ---- killed processes --------------------------------------------------

// Seen by parent and child: the number of changes that have succeeded.
volatile unsigned *shared_counter() {
    void *page = mmap(nullptr, 4096, PROT_READ | PROT_WRITE,
                      MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return static_cast<volatile unsigned *>(page);
}

[[noreturn]] void change_until_killed(const history &all,
                                      volatile unsigned *done) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    database db("db");
    while (make(all.number(*done), &db))
        *done = *done + 1;
    _exit(1);
}

// Lets a process change the database for a moment; false: it ended itself.
bool let_live_and_kill(const history &all, volatile unsigned *done,
                       std::mt19937 *random) {
    unsigned before = *done;
    pid_t child = fork();
    if (child == 0) change_until_killed(all, done);
    // It is at work once it has changed something.
    while (*done == before && waitpid(child, nullptr, WNOHANG) == 0)
        usleep(10);
    usleep(static_cast<unsigned>((*random)() % 1500));
    kill(child, SIGKILL);
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFSIGNALED(status);
}

int kills_wanted() {
    const char *wanted = getenv("TOVAN_KILLS");
    return wanted != nullptr ? atoi(wanted) : 40;
}

void kill_again_and_again(int page_kb) {
    volatile unsigned *done = shared_counter();
    std::mt19937 random(static_cast<unsigned>(time(nullptr)));
    unsigned changes = 0;
    unsigned lives = 0;
    history all{1, 1500, static_cast<unsigned>(page_kb) * 150};
    expectation expected;
    unsigned confirmed = 0;
    database("db", page_kb);
    for (int kills = 0; kills < kills_wanted(); ++kills) {
        ASSERT_TRUE(let_live_and_kill(all, done, &random));
        for (; confirmed < *done; ++confirmed)
            expected.confirm(all.number(confirmed));
        database db("db");
        ASSERT_EQ(expected.flaw_of(&db, all.number(*done)), "")
            << "seed " << all.seed << ", change " << *done;
        if (*done < 4000) continue;
        // Young databases split most.
        changes += *done;
        ++lives;
        *done = confirmed = 0;
        ++all.seed;
        expected = {};
        database("db", page_kb);
    }
    printf("%d kills, %u databases, %u changes\n", kills_wanted(), lives + 1,
           changes + *done);
}

TEST(ddbm_crash, killed_processes_lose_nothing_with_pages_of_1_kb) {
    kill_again_and_again(1);
}

TEST(ddbm_crash, killed_processes_lose_nothing_with_pages_of_4_kb) {
    kill_again_and_again(4);
}

// ---- every beginning of a sequence of writes -----------------------------

#if defined(__SANITIZE_ADDRESS__)
constexpr size_t writes_recorded = 4000;  // what takes seconds takes minutes
#else
constexpr size_t writes_recorded = 20000;
#endif

struct written {
    bool is_directory;
    off_t offset;
    std::string bytes;
    unsigned change;  // that was under way
};

std::vector<written> record(const history &all, int page_kb, size_t writes) {
    std::vector<written> recorded;
    database db("db", page_kb);
    unsigned i = 0;
    support::on_call = [&](const support::system_call &call) {
        if (call.kind != support::call_kind::pwrite)
            return support::goes_through;
        auto *bytes = static_cast<const char *>(call.bytes);
        recorded.push_back({call.descriptor == db->dir_fd, call.offset,
                            std::string(bytes, call.count), i});
        return support::goes_through;
    };
    for (; recorded.size() < writes; ++i)
        EXPECT_TRUE(make(all.number(i), &db)) << i;
    support::on_call = nullptr;
    return recorded;
}

void replay(const history &all, int page_kb,
            const std::vector<written> &recorded) {
    expectation expected;
    unsigned confirmed = 0;
    int splits = 0;
    database("copy", page_kb);
    int directory = open("copy.dir", O_WRONLY);
    int pages = open("copy.pag", O_WRONLY);
    for (const written &next : recorded) {
        for (; confirmed < next.change; ++confirmed)
            expected.confirm(all.number(confirmed));
        EXPECT_EQ(pwrite(next.is_directory ? directory : pages,
                         next.bytes.data(), next.bytes.size(), next.offset),
                  static_cast<ssize_t>(next.bytes.size()));
        splits += next.is_directory;
        database db("copy");
        ASSERT_EQ(expected.flaw_of(&db, all.number(next.change)), "")
            << "change " << next.change;
    }
    close(directory);
    close(pages);
    EXPECT_GT(splits, 50);
}

TEST(ddbm_crash, every_beginning_of_the_writes_has_all_pairs_of_1_kb) {
    history all{7, 150, 400};
    replay(all, 1, record(all, 1, writes_recorded));
}

TEST(ddbm_crash, every_beginning_of_the_writes_has_all_pairs_of_4_kb) {
    history all{8, 150, 1800};
    replay(all, 4, record(all, 4, writes_recorded));
}

TEST(ddbm_crash, a_split_that_broke_off_shows_only_in_listings) {
    std::set<std::string> keys;
    {
        database db("db", 1);
        bool bit_is_set = false;
        support::on_call = [&](const support::system_call &call) {
            // The old half of the first split is what does not arrive.
            int answer = bit_is_set ? EIO : support::goes_through;
            bit_is_set = call.kind == support::call_kind::pwrite &&
                         call.descriptor == db->dir_fd;
            return answer;
        };
        for (int i = 0; db->flags == 0; ++i) {
            std::string key = "key" + std::to_string(i);
            if (db.put(key, std::string(100, 'v')) == 0) keys.insert(key);
        }
        support::on_call = nullptr;
    }
    database db("db");
    std::vector<std::string> listed = db.keys();
    EXPECT_GT(listed.size(), keys.size());
    for (const std::string &key : keys)
        EXPECT_EQ(db.get(key), std::string(100, 'v')) << key;
    std::set<std::string> once(listed.begin(), listed.end());
    for (const std::string &key : keys)
        EXPECT_EQ(once.count(key), 1u) << key;
}

}  // namespace
