// ddbm_fault_test.cc: every system call and every allocation of the database
// fails once.
//
// One life of a database is lived again and again. In each, one call fails, or
// is interrupted, or moves fewer bytes than asked for. Whatever was stored must
// be found in it and after it; what failed must have said so.
#include "support/child.h"
#include "support/database.h"
#include "support/system_calls.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>
#include <map>
#include <random>
#include <set>

namespace {

using support::call_kind;
using support::item_of;

constexpr int io_error = 2;

using value = std::optional<std::string>;

int open_descriptors() {
    int count = 0;
    for (int i = 0; i < 64; ++i)
        count += fcntl(i, F_GETFD) != -1;
    return count;
}

// The one call that is not as it should be.
struct fault {
    call_kind kind;
    int number;  // of the calls of that kind
    int effect;
};

void PrintTo(const fault &f, std::ostream *out) {
    *out << "kind " << static_cast<int>(f.kind) << ", number " << f.number
         << ", effect " << f.effect;
}

// Makes the fault happen, and counts.
class saboteur {
  public:
    explicit saboteur(const fault &planned) {
        support::on_call = [this, planned](const support::system_call &call) {
            int number = counts_[static_cast<int>(call.kind)]++;
            if (call.kind != planned.kind || number != planned.number)
                return support::goes_through;
            has_struck_ = true;
            return planned.effect;
        };
    }
    ~saboteur() {
        support::on_call = nullptr;
    }
    bool has_struck() const {
        return has_struck_;
    }

  private:
    int counts_[support::call_kinds] = {};
    bool has_struck_ = false;
};

// One life of a database, and what may be in it.
class life {
  public:
    explicit life(const fault &planned) : fault_(planned) {
    }

    // Whether the fault came to pass.
    bool live() {
        unlink("db.dir");
        unlink("db.pag");
        int before = open_descriptors();
        saboteur at_work(fault_);
        if (open(O_RDWR | O_CREAT)) {
            change();
            list();
            look_up();
            dbm_close(db_);
        }
        if (open(O_RDONLY)) {
            look_up();
            list();
            dbm_close(db_);
        }
        bool struck = at_work.has_struck();
        support::on_call = nullptr;
        EXPECT_EQ(open_descriptors(), before);
        check_what_is_left();
        return struck;
    }

    int failures() const {
        return failures_;
    }

  private:
    // A failure that is allowed: it has a reason, and the handle knows.
    void accept_failure() {
        ++failures_;
        EXPECT_LE(failures_, 1);
        EXPECT_EQ(errno, fault_.effect);
        EXPECT_NE(db_->flags & io_error, 0);
        EXPECT_GT(fault_.effect, 0) << "not even a real one";
    }

    bool open(int flags) {
        errno = 0;
        db_ = dbm_open("db", flags, 0666);
        if (db_ != nullptr) return true;
        ++failures_;
        EXPECT_TRUE(errno == fault_.effect || failures_ > 1) << errno;
        return false;
    }

    void store(const std::string &key, const std::string &bytes) {
        errno = 0;
        db_->flags &= ~io_error;
        int result = dbm_store(db_, item_of(key), item_of(bytes), 1);
        if (result == 0) {
            possible_[key] = {bytes};
            return;
        }
        accept_failure();
        if (possible_[key].empty()) possible_[key].insert(std::nullopt);
        possible_[key].insert(bytes);
    }

    void remove(const std::string &key) {
        errno = 0;
        db_->flags &= ~io_error;
        int result = dbm_delete(db_, item_of(key));
        if (result == 0) {
            possible_[key] = {std::nullopt};
        } else if ((db_->flags & io_error) != 0) {
            accept_failure();
            possible_[key].insert(std::nullopt);
        } else {
            EXPECT_TRUE(possible_[key].empty() ||
                        possible_[key].count(std::nullopt) == 1);
            possible_[key] = {std::nullopt};
        }
    }

    void change() {
        std::mt19937 random(5);
        for (int i = 0; i < 90; ++i) {
            std::string key = "key" + std::to_string(random() % 60);
            if (i % 8 == 7)
                remove(key);
            else
                store(key, std::string(random() % 200, 'v'));
        }
    }

    void look_up() {
        for (const auto &[key, values] : possible_) {
            errno = 0;
            db_->flags &= ~io_error;
            dbm_datum found = dbm_alfetch(db_, item_of(key));
            bool uncertain = (db_->flags & io_error) != 0;
            // A value that cannot be copied is the one failure without flag.
            if (found.data == nullptr && errno == ENOMEM) uncertain = true;
            if (uncertain && found.data == nullptr) {
                EXPECT_EQ(errno, fault_.effect);
                ++failures_;
                continue;
            }
            EXPECT_EQ(values.count(support::bytes_of(found)), 1u) << key;
        }
    }

    void list() {
        std::multiset<std::string> listed;
        errno = 0;
        dbm_datum key = dbm_firstkey(db_);
        for (; key.data != nullptr; key = dbm_nextkey(db_))
            listed.insert(*support::bytes_of(key));
        EXPECT_NE(db_->flags & io_error, 0);
        if (errno != 0) {
            EXPECT_EQ(errno, fault_.effect);
            ++failures_;
            return;
        }
        for (const auto &[name, values] : possible_) {
            size_t least = values.count(std::nullopt) != 0 ? 0 : 1;
            EXPECT_GE(listed.count(name), least) << name;
        }
        // A split that broke off leaves copies that no look-up reaches.
        if (failures_ > 0) return;
        for (const std::string &name : listed)
            EXPECT_EQ(listed.count(name), 1u) << name;
    }

    // By a handle of its own, nothing failing any more.
    void check_what_is_left() {
        db_ = dbm_open("db", O_RDONLY, 0);
        if (db_ == nullptr) {
            EXPECT_TRUE(possible_.empty());
            return;
        }
        int before = failures_;
        look_up();
        EXPECT_EQ(failures_, before);
        dbm_close(db_);
    }

    fault fault_;
    dbm_handle *db_ = nullptr;
    std::map<std::string, std::set<value>> possible_;
    int failures_ = 0;
};

// The fault at each call of a kind in turn. Gives the number of lives in which
// something failed.
int live_with(call_kind kind, int effect) {
    int failed = 0;
    for (int number = 0;; ++number) {
        fault planned{kind, number, effect};
        life one(planned);
        bool struck = one.live();
        if (testing::Test::HasFailure()) {
            ADD_FAILURE() << testing::PrintToString(planned);
            break;
        }
        if (!struck) {
            EXPECT_GT(number, 0) << "no such call";
            break;
        }
        failed += one.failures() > 0;
    }
    return failed;
}

TEST(ddbm_fault, open) {
    for (int error : {EMFILE, ENFILE, EACCES, ENOENT})
        EXPECT_EQ(live_with(call_kind::open, error), 4);
}

TEST(ddbm_fault, reading_the_page_size) {
    EXPECT_EQ(live_with(call_kind::read, EIO), 1);
}

TEST(ddbm_fault, writing_the_page_size) {
    for (int error : {EIO, ENOSPC, EDQUOT})
        EXPECT_EQ(live_with(call_kind::write, error), 1);
}

TEST(ddbm_fault, fstat) {
    EXPECT_EQ(live_with(call_kind::fstat, EIO), 1);
}

TEST(ddbm_fault, reading_pages_and_the_directory) {
    EXPECT_GT(live_with(call_kind::pread, EIO), 50);
}

TEST(ddbm_fault, writing_pages_and_the_directory) {
    for (int error : {EIO, ENOSPC, EDQUOT, EFBIG})
        EXPECT_GT(live_with(call_kind::pwrite, error), 90);
}

TEST(ddbm_fault, seeking_data_is_done_without) {
    for (int error : {EIO, EINVAL})
        EXPECT_EQ(live_with(call_kind::lseek, error), 0);
}

TEST(ddbm_fault, memory_for_the_directory) {
    EXPECT_GT(live_with(call_kind::mmap, ENOMEM), 0);
}

TEST(ddbm_fault, memory) {
    // Names and handles twice, two scratch pages. A copy of an aligned value
    // has its room, and the iteration does without reading ahead.
    EXPECT_EQ(live_with(call_kind::malloc, ENOMEM), 6);
}

TEST(ddbm_fault, closing) {
    EXPECT_EQ(live_with(call_kind::close, EIO), 0);
}

TEST(ddbm_fault, interruptions_do_not_show) {
    for (call_kind kind : {call_kind::open, call_kind::read, call_kind::write,
                           call_kind::pread, call_kind::pwrite})
        EXPECT_EQ(live_with(kind, EINTR), 0);
}

TEST(ddbm_fault, short_counts_do_not_show) {
    for (call_kind kind : {call_kind::pread, call_kind::pwrite}) {
        for (int effect : {support::cut_to(1), support::half_of_it})
            EXPECT_EQ(live_with(kind, effect), 0);
    }
}

// Stores and removes until something fails, under these conditions; then what
// was stored must be there.
void change_under(
    const std::function<int(const support::system_call &)> &faults,
    const std::string &label) {
    unlink("db.dir");
    unlink("db.pag");
    std::map<std::string, value> held;
    support::database db("db", 1);
    std::mt19937 random(3);
    support::on_call = faults;
    for (int i = 0; i < 120; ++i) {
        std::string key = "key" + std::to_string(random() % 60);
        std::string bytes(random() % 200, 'v');
        db->flags = 0;
        if (i % 8 == 7) {
            if (db.remove(key) == 0) held[key] = std::nullopt;
        } else if (db.put(key, bytes) == 0) {
            held[key] = bytes;
        }
        // The key of a failure may have either value.
        if (db->flags != 0) held.erase(key);
    }
    support::on_call = nullptr;
    support::database again("db");
    for (const auto &[key, bytes] : held) {
        EXPECT_EQ(db.get(key), bytes) << key << label;
        EXPECT_EQ(again.get(key), bytes) << key << label;
    }
}

TEST(ddbm_fault, a_write_that_breaks_off_damages_no_other_pair) {
    // Cuts in the count, behind it, in the entries and in the items.
    for (int cut : {support::cut_to(1), support::cut_to(2), support::cut_to(5),
                    support::cut_to(11), support::half_of_it}) {
        for (int number = 0; number < 150 && !HasFailure(); ++number) {
            int writes = 0;
            change_under(
                [&](const support::system_call &call) {
                    if (call.kind != call_kind::pwrite)
                        return support::goes_through;
                    int n = writes++;
                    if (n == number) return cut;
                    return n == number + 1 ? EIO : support::goes_through;
                },
                " of write " + std::to_string(number));
        }
    }
}

TEST(ddbm_fault, a_full_disk_takes_what_needs_no_new_page) {
    for (off_t pages = 0; pages < 20 && !HasFailure(); ++pages) {
        change_under(
            [&](const support::system_call &call) {
                bool grows = call.kind == call_kind::pwrite &&
                             call.count == 1024 && call.offset / 1024 >= pages;
                return grows ? ENOSPC : support::goes_through;
            },
            " of " + std::to_string(pages) + " pages");
    }
}

TEST(ddbm_fault, a_full_disk_cannot_split) {
    for (int number = 1; number < 20; ++number) {
        int writes = 0;
        change_under(
            [&](const support::system_call &call) {
                if (call.kind != call_kind::pwrite || call.count != 4096)
                    return support::goes_through;
                return writes++ >= number ? ENOSPC : support::goes_through;
            },
            " of " + std::to_string(number) + " splits");
    }
}

TEST(ddbm_fault, a_write_that_makes_no_progress_is_a_full_disk) {
    support::database db("db", 1);
    support::on_call = [](const support::system_call &call) {
        return call.kind == call_kind::pwrite ? support::cut_to(0)
                                              : support::goes_through;
    };
    errno = 0;
    EXPECT_EQ(db.put("key", "value"), -1);
    EXPECT_EQ(errno, ENOSPC);
    support::on_call = nullptr;
    EXPECT_EQ(db.get("key"), std::nullopt);
    EXPECT_EQ(db.put("key", "value"), 0);
    EXPECT_EQ(db.get("key"), "value");
}

TEST(ddbm_fault, a_long_value_that_cannot_be_copied_is_not_found) {
    support::database db("db", 64);
    std::string bytes(5002, 'v');
    db.put("key", bytes);
    support::on_call = [](const support::system_call &call) {
        return call.kind == call_kind::malloc ? ENOMEM : 0;
    };
    errno = 0;
    dbm_datum found = dbm_alfetch(db, item_of("key"));
    support::on_call = nullptr;
    EXPECT_EQ(found.data, nullptr);
    EXPECT_EQ(found.length, 0);
    EXPECT_EQ(errno, ENOMEM);
    EXPECT_EQ(support::bytes_of(dbm_alfetch(db, item_of("key"))), bytes);
}

TEST(ddbm_fault, nothing_is_stored_where_the_directory_is_unreadable) {
    {
        support::database db("db", 1);
        for (int i = 0; i < 100; ++i)
            db.put("key" + std::to_string(i), std::string(90, 'v'));
    }
    support::database db("db");
    support::on_call = [&](const support::system_call &call) {
        return call.descriptor == db->dir_fd ? EIO : 0;
    };
    errno = 0;
    EXPECT_EQ(db.put("new", "value"), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(db.remove("key1"), -1);
    EXPECT_EQ(db->flags, io_error);
    db->flags = 0;
    db.get("key1");
    EXPECT_EQ(db->page_no, 0) << "as if no page was split";
    EXPECT_EQ(db->flags, io_error);
    support::on_call = nullptr;
    EXPECT_EQ(db.put("new", "value"), 0);
    EXPECT_EQ(db.get("new"), "value");
}

}  // namespace
