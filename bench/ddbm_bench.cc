// ddbm_bench.cc: job g, a million pairs stored, fetched and listed, beside
// other databases of that kind, none of which synchronises.
//
// ours, ours_4kb   pages of 1 KB and 4 KB
// lmdb             a transaction for each store and for each fetch
// bdb, bdb_cache   a hash with the usual cache, and with 128 MB
// tokyo, _tuned    a hash as it comes, and with buckets and a mapping for all
// pread_pwrite, pread, mapping   what one page costs to get and put back; the
//                  last is our fetch, with the page in a mapping of the file
//
// TOVAN_PAIRS in the environment is another number of pairs. Counters give the
// size of the files and, in the rows of memory, the peak resident size.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tovan/ddbm.h>
#include <tovan/private_ddbm.h>
#include <unistd.h>
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>
#ifdef TOVAN_PEER_GDBM
#include <gdbm.h>
#endif
#ifdef TOVAN_PEER_LMDB
#include <lmdb.h>
#endif
#ifdef TOVAN_PEER_BDB
#include <db.h>
#endif
#ifdef TOVAN_PEER_TOKYO
#include <tchdb.h>
#endif

namespace {

size_t pair_count() {
    const char *wanted = getenv("TOVAN_PAIRS");
    return wanted != nullptr ? strtoul(wanted, nullptr, 10) : 1000000;
}

// Pairs by number: a key of 12 bytes, a value of 40 to 103.
struct pair_text {
    explicit pair_text(size_t number) {
        snprintf(key, sizeof key, "key%09zu", number % 1000000000);
        uint64_t mixed = (number + 1) * 0x9e3779b97f4a7c15u;
        value_length = 40 + (mixed >> 58);
        memset(value, 'a' + static_cast<int>(number % 26), value_length);
    }
    static constexpr size_t key_length = 12;
    char key[16];
    char value[104];
    size_t value_length;
};

[[noreturn]] void give_up(const char *what) {
    fprintf(stderr, "ddbm_bench: %s failed\n", what);
    abort();
}

void need(bool worked, const char *what) {
    if (!worked) give_up(what);
}

// A folder that is gone when the program ends.
const std::string &folder() {
    static struct made {
        std::string name = "/tmp/ddbm-bench-XXXXXX";
        made() {
            need(mkdtemp(name.data()) != nullptr, "mkdtemp");
        }
        ~made() {
            std::filesystem::remove_all(name);
        }
    } one;
    return one.name;
}

// One database, ours or another.
class store {
  public:
    virtual ~store() = default;
    virtual void put(const pair_text &pair) = 0;
    virtual size_t get(const pair_text &pair) = 0;  // the value's length
    virtual size_t list() = 0;                      // the number of keys
};

class our_store : public store {
  public:
    our_store(const std::string &base, int page_kb) {
        int flags = O_RDWR | (page_kb != 0 ? O_CREAT | O_TRUNC : 0);
        db_ = dbm_prep((base + ".dir").c_str(), (base + ".pag").c_str(),
                       page_kb, flags, 0666);
        need(db_ != nullptr, "dbm_prep");
    }
    ~our_store() override {
        dbm_close(db_);
    }
    void put(const pair_text &pair) override {
        dbm_datum value = {const_cast<char *>(pair.value),
                           static_cast<int>(pair.value_length)};
        need(dbm_store(db_, key_of(pair), value, 1) == 0, "dbm_store");
    }
    size_t get(const pair_text &pair) override {
        return static_cast<size_t>(dbm_fetch(db_, key_of(pair)).length);
    }
    size_t list() override {
        size_t count = 0;
        dbm_datum key = dbm_firstkey(db_);
        for (; key.data != nullptr; key = dbm_nextkey(db_))
            ++count;
        return count;
    }

  protected:
    static dbm_datum key_of(const pair_text &pair) {
        return {const_cast<char *>(pair.key), pair_text::key_length};
    }
    dbm_handle *db_;
};

// What a fetch would cost if a file that is cut short were none of our
// concern.
class mapped_store : public our_store {
  public:
    explicit mapped_store(const std::string &base) : our_store(base, 0) {
        struct stat status;
        fstat(db_->pag_fd, &status);
        size_ = static_cast<size_t>(status.st_size);
        pages_ = static_cast<unsigned char *>(
            mmap(nullptr, size_, PROT_READ, MAP_SHARED, db_->pag_fd, 0));
        need(pages_ != MAP_FAILED, "mmap");
    }
    ~mapped_store() override {
        munmap(pages_, size_);
    }
    size_t get(const pair_text &pair) override {
        uint32_t hash = dbm_hash(pair.key, pair_text::key_length);
        tovan::find_leaf(db_, hash);
        auto size = static_cast<size_t>(db_->page_size);
        size_t at = (hash & db_->hash_mask) * size;
        if (at + size > size_) return 0;
        tovan::page page = {pages_ + at, db_->page_size};
        if (!tovan::is_valid(page)) return 0;
        int i = tovan::find_pair(page, key_of(pair));
        if (i == 0) return 0;
        return static_cast<size_t>(tovan::value_at(page, i).length);
    }

  private:
    unsigned char *pages_;
    size_t size_;
};

// One page read, and written back, for each pair.
class bare_store : public store {
  public:
    explicit bare_store(const std::string &base) {
        file_ = open((base + ".pag").c_str(), O_RDWR);
        need(file_ != -1, "open");
        pages_ = lseek(file_, 0, SEEK_END) / 1024;
    }
    ~bare_store() override {
        close(file_);
    }
    void put(const pair_text &pair) override {
        get(pair);
        off_t at = offset_of(pair);
        need(pwrite(file_, page_, sizeof page_, at) == sizeof page_, "pwrite");
    }
    size_t get(const pair_text &pair) override {
        need(pread(file_, page_, sizeof page_, offset_of(pair)) > 0, "pread");
        return 1;
    }
    size_t list() override {
        return 0;
    }

  private:
    off_t offset_of(const pair_text &pair) const {
        uint32_t hash = dbm_hash(pair.key, pair_text::key_length);
        return hash % static_cast<uint32_t>(pages_) * off_t{1024};
    }
    int file_;
    off_t pages_;
    char page_[1024];
};

#ifdef TOVAN_PEER_GDBM
class gnu_store : public store {
  public:
    gnu_store(const std::string &base, bool creates) {
        std::string name = base + ".gdbm";
        int mode = creates ? GDBM_NEWDB : GDBM_WRITER;
        db_ = gdbm_open(name.c_str(), 0, mode | GDBM_NOLOCK, 0666, nullptr);
        need(db_ != nullptr, "gdbm_open");
    }
    ~gnu_store() override {
        gdbm_close(db_);
    }
    void put(const pair_text &pair) override {
        datum value = {const_cast<char *>(pair.value),
                       static_cast<int>(pair.value_length)};
        need(gdbm_store(db_, key_of(pair), value, GDBM_REPLACE) == 0,
             "gdbm_store");
    }
    size_t get(const pair_text &pair) override {
        datum value = gdbm_fetch(db_, key_of(pair));
        free(value.dptr);
        return static_cast<size_t>(value.dsize);
    }
    size_t list() override {
        size_t count = 0;
        datum key = gdbm_firstkey(db_);
        while (key.dptr != nullptr) {
            ++count;
            datum next = gdbm_nextkey(db_, key);
            free(key.dptr);
            key = next;
        }
        return count;
    }

  private:
    static datum key_of(const pair_text &pair) {
        return {const_cast<char *>(pair.key), pair_text::key_length};
    }
    GDBM_FILE db_;
};
#endif

#ifdef TOVAN_PEER_LMDB
class lmdb_store : public store {
  public:
    lmdb_store(const std::string &base, bool creates) {
        std::string name = base + ".lmdb";
        if (creates) unlink(name.c_str());
        mdb_env_create(&env_);
        mdb_env_set_mapsize(env_, size_t{8} << 30);
        unsigned flags = MDB_NOSUBDIR | MDB_NOSYNC | MDB_NOLOCK;
        need(mdb_env_open(env_, name.c_str(), flags, 0666) == 0,
             "mdb_env_open");
        MDB_txn *txn;
        mdb_txn_begin(env_, nullptr, 0, &txn);
        mdb_dbi_open(txn, nullptr, 0, &dbi_);
        mdb_txn_commit(txn);
        mdb_txn_begin(env_, nullptr, MDB_RDONLY, &reader_);
        mdb_txn_reset(reader_);
    }
    ~lmdb_store() override {
        mdb_txn_abort(reader_);
        mdb_env_close(env_);
    }
    void put(const pair_text &pair) override {
        MDB_val key = key_of(pair);
        MDB_val value = {pair.value_length, const_cast<char *>(pair.value)};
        MDB_txn *txn;
        mdb_txn_begin(env_, nullptr, 0, &txn);
        need(mdb_put(txn, dbi_, &key, &value, 0) == 0, "mdb_put");
        need(mdb_txn_commit(txn) == 0, "mdb_txn_commit");
    }
    size_t get(const pair_text &pair) override {
        MDB_val key = key_of(pair);
        MDB_val value = {0, nullptr};
        mdb_txn_renew(reader_);
        mdb_get(reader_, dbi_, &key, &value);
        mdb_txn_reset(reader_);
        return value.mv_size;
    }
    size_t list() override {
        mdb_txn_renew(reader_);
        MDB_cursor *cursor;
        mdb_cursor_open(reader_, dbi_, &cursor);
        MDB_val key;
        MDB_val value;
        size_t count = 0;
        while (mdb_cursor_get(cursor, &key, &value, MDB_NEXT) == 0)
            ++count;
        mdb_cursor_close(cursor);
        mdb_txn_reset(reader_);
        return count;
    }

  private:
    static MDB_val key_of(const pair_text &pair) {
        return {pair_text::key_length, const_cast<char *>(pair.key)};
    }
    MDB_env *env_;
    MDB_dbi dbi_;
    MDB_txn *reader_;
};
#endif

#ifdef TOVAN_PEER_BDB
class bdb_store : public store {
  public:
    bdb_store(const std::string &base, bool creates, uint32_t cache) {
        std::string name = base + ".bdb";
        if (creates) unlink(name.c_str());
        need(db_create(&db_, nullptr, 0) == 0, "db_create");
        if (cache != 0) db_->set_cachesize(db_, 0, cache, 1);
        need(db_->open(db_, nullptr, name.c_str(), nullptr, DB_HASH,
                       creates ? DB_CREATE : 0, 0666) == 0,
             "DB->open");
    }
    ~bdb_store() override {
        db_->close(db_, DB_NOSYNC);
    }
    void put(const pair_text &pair) override {
        DBT key = key_of(pair);
        DBT value = item(pair.value, pair.value_length);
        need(db_->put(db_, nullptr, &key, &value, 0) == 0, "DB->put");
    }
    size_t get(const pair_text &pair) override {
        DBT key = key_of(pair);
        DBT value = item(nullptr, 0);
        db_->get(db_, nullptr, &key, &value, 0);
        return value.size;
    }
    size_t list() override {
        DBC *cursor;
        db_->cursor(db_, nullptr, &cursor, 0);
        DBT key = item(nullptr, 0);
        DBT value = item(nullptr, 0);
        size_t count = 0;
        while (cursor->get(cursor, &key, &value, DB_NEXT) == 0)
            ++count;
        cursor->close(cursor);
        return count;
    }

  private:
    static DBT item(const char *bytes, size_t length) {
        DBT item = {};
        item.data = const_cast<char *>(bytes);
        item.size = static_cast<uint32_t>(length);
        return item;
    }
    static DBT key_of(const pair_text &pair) {
        return item(pair.key, pair_text::key_length);
    }
    DB *db_;
};
#endif

#ifdef TOVAN_PEER_TOKYO
class tokyo_store : public store {
  public:
    tokyo_store(const std::string &base, bool creates, bool tuned)
        : db_(tchdbnew()) {
        std::string name = base + ".tch";
        if (tuned) {
            auto buckets = static_cast<int64_t>(2 * pair_count());
            tchdbtune(db_, buckets, -1, -1, HDBTLARGE);
            tchdbsetxmsiz(db_, int64_t{1} << 30);
        }
        int mode = HDBOWRITER | HDBONOLCK;
        if (creates) mode |= HDBOCREAT | HDBOTRUNC;
        need(tchdbopen(db_, name.c_str(), mode), "tchdbopen");
    }
    ~tokyo_store() override {
        tchdbclose(db_);
        tchdbdel(db_);
    }
    void put(const pair_text &pair) override {
        need(tchdbput(db_, pair.key, pair_text::key_length, pair.value,
                      static_cast<int>(pair.value_length)),
             "tchdbput");
    }
    size_t get(const pair_text &pair) override {
        int length = 0;
        free(tchdbget(db_, pair.key, pair_text::key_length, &length));
        return static_cast<size_t>(length);
    }
    size_t list() override {
        tchdbiterinit(db_);
        size_t count = 0;
        int length;
        while (void *key = tchdbiternext(db_, &length)) {
            ++count;
            free(key);
        }
        return count;
    }

  private:
    TCHDB *db_;
};
#endif

// How to make a store, or to open it again.
struct maker {
    const char *name;
    std::function<std::unique_ptr<store>(const std::string &base, bool creates)>
        make;
};

std::vector<maker> makers() {
    std::vector<maker> all;
    for (int kb : {1, 4}) {
        all.push_back({kb == 1 ? "ours" : "ours_4kb",
                       [kb](const std::string &base, bool creates) {
                           return std::make_unique<our_store>(base,
                                                              creates ? kb : 0);
                       }});
    }
#ifdef TOVAN_PEER_GDBM
    all.push_back({"gdbm", [](const std::string &base, bool creates) {
                       return std::make_unique<gnu_store>(base, creates);
                   }});
#endif
#ifdef TOVAN_PEER_LMDB
    all.push_back({"lmdb", [](const std::string &base, bool creates) {
                       return std::make_unique<lmdb_store>(base, creates);
                   }});
#endif
#ifdef TOVAN_PEER_BDB
    for (uint32_t cache : {0u, 128u << 20}) {
        all.push_back({cache == 0 ? "bdb" : "bdb_cache",
                       [cache](const std::string &base, bool creates) {
                           return std::make_unique<bdb_store>(base, creates,
                                                              cache);
                       }});
    }
#endif
#ifdef TOVAN_PEER_TOKYO
    for (bool tuned : {false, true}) {
        all.push_back({tuned ? "tokyo_tuned" : "tokyo",
                       [tuned](const std::string &base, bool creates) {
                           return std::make_unique<tokyo_store>(base, creates,
                                                                tuned);
                       }});
    }
#endif
    return all;
}

std::string base_of(const std::string &name) {
    return folder() + "/" + name;
}

void fill(store *one, size_t count) {
    for (size_t i = 0; i < count; ++i)
        one->put(pair_text(i));
}

double megabytes_of(const std::string &name) {
    double size = 0;
    for (const auto &entry : std::filesystem::directory_iterator(folder())) {
        if (entry.path().stem() != name) continue;
        struct stat status;
        stat(entry.path().c_str(), &status);
        size += static_cast<double>(status.st_blocks) * 512 / 1e6;
    }
    return size;
}

// Fills a database of each kind once; the other rows use it.
void make_sure(const maker &kind) {
    static std::vector<std::string> made;
    if (std::find(made.begin(), made.end(), kind.name) != made.end()) return;
    made.push_back(kind.name);
    fill(kind.make(base_of(kind.name), true).get(), pair_count());
}

void insert(benchmark::State &state, const maker &kind) {
    for (auto _ : state) {
        std::unique_ptr<store> one = kind.make(base_of("insert"), true);
        fill(one.get(), pair_count());
    }
    sync();
    state.counters["megabytes"] = megabytes_of("insert");
}

void fetch_from(benchmark::State &state, store *one) {
    size_t count = pair_count();
    std::mt19937_64 random(9);
    for (auto _ : state) {
        for (size_t i = 0; i < count; ++i) {
            if (one->get(pair_text(random() % count)) == 0) give_up("fetch");
        }
    }
}

void fetch(benchmark::State &state, const maker &kind) {
    make_sure(kind);
    fetch_from(state, kind.make(base_of(kind.name), false).get());
}

void list(benchmark::State &state, const maker &kind) {
    make_sure(kind);
    std::unique_ptr<store> one = kind.make(base_of(kind.name), false);
    for (auto _ : state) {
        if (one->list() != pair_count()) give_up("listing");
    }
}

// The peak of a process that stores and fetches.
void memory(benchmark::State &state, const maker &kind) {
    for (auto _ : state) {
        pid_t child = fork();
        if (child == 0) {
            std::unique_ptr<store> one = kind.make(base_of("memory"), true);
            fill(one.get(), pair_count());
            for (size_t i = 0; i < pair_count(); ++i)
                one->get(pair_text(i));
            _exit(0);
        }
        int status;
        struct rusage used;
        wait4(child, &status, 0, &used);
        state.counters["peak_megabytes"] =
            static_cast<double>(used.ru_maxrss) / 1024;
    }
}

void add(const std::string &name,
         const std::function<void(benchmark::State &)> &run) {
    benchmark::RegisterBenchmark(name.c_str(), run)
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1)
        ->UseRealTime();
}

maker first_maker() {
    return makers()[0];
}

void add_limits() {
    add("insert_1m/pread_pwrite", [](benchmark::State &state) {
        make_sure(first_maker());
        std::filesystem::copy_file(base_of("ours") + ".pag",
                                   base_of("bare") + ".pag");
        {
            bare_store one(base_of("bare"));
            for (auto _ : state)
                fill(&one, pair_count());
        }
        unlink((base_of("bare") + ".pag").c_str());
    });
    add("fetch_1m/pread", [](benchmark::State &state) {
        make_sure(first_maker());
        bare_store one(base_of("ours"));
        fetch_from(state, &one);
    });
    add("fetch_1m/mapping", [](benchmark::State &state) {
        make_sure(first_maker());
        mapped_store one(base_of("ours"));
        fetch_from(state, &one);
    });
}

void add_jobs() {
    struct {
        const char *name;
        void (*run)(benchmark::State &, const maker &);
    } jobs[] = {{"insert_1m", insert},
                {"fetch_1m", fetch},
                {"list_1m", list},
                {"memory_1m", memory}};
    for (const auto &job : jobs) {
        for (const maker &kind : makers())
            add(std::string(job.name) + "/" + kind.name,
                [job, kind](benchmark::State &state) { job.run(state, kind); });
    }
}

double seconds_of(const std::function<void()> &work) {
    auto start = std::chrono::steady_clock::now();
    work();
    std::chrono::duration<double> taken =
        std::chrono::steady_clock::now() - start;
    return taken.count();
}

// Time of one operation among n pairs.
void add_law(const std::string &name, size_t n,
             const std::function<double(store *, size_t)> &per_operation) {
    std::string row = "law/" + name + "/" + std::to_string(n);
    auto run = [=](benchmark::State &state) {
        for (auto _ : state) {
            our_store one(base_of("law"), 1);
            state.SetIterationTime(per_operation(&one, n));
        }
    };
    benchmark::RegisterBenchmark(row.c_str(), run)
        ->Iterations(1)
        ->UseManualTime();
}

// The last tenth of the stores: those into n pairs.
double time_of_store(store *one, size_t n) {
    size_t last = n / 10;
    fill(one, n - last);
    double taken = seconds_of([&] {
        for (size_t i = n - last; i < n; ++i)
            one->put(pair_text(i));
    });
    return taken / static_cast<double>(last);
}

double time_of_fetch(store *one, size_t n) {
    fill(one, n);
    std::mt19937_64 random(9);
    constexpr int fetches = 200000;
    double taken = seconds_of([&] {
        for (int i = 0; i < fetches; ++i)
            one->get(pair_text(random() % n));
    });
    return taken / fetches;
}

// A listing of 1000 pages in files of so many GB.
void list_sparse(benchmark::State &state, int64_t gigabytes) {
    std::string base = base_of("sparse");
    { our_store one(base, 1); }
    int file = open((base + ".pag").c_str(), O_RDWR);
    off_t step = (gigabytes << 30) / 1000 / 1024 * 1024;
    unsigned char bytes[1024] = {};
    tovan::page page = {bytes, sizeof bytes};
    char key[] = "key";
    tovan::put_pair(page, {key, 3}, {key, 3});
    for (off_t i = 0; i < 1000; ++i)
        need(pwrite(file, bytes, sizeof bytes, i * step) == sizeof bytes,
             "pwrite");
    close(file);
    our_store one(base, 0);
    for (auto _ : state) {
        if (one.list() != 1000) give_up("listing");
    }
}

void add_laws() {
    for (size_t n = 1000; n <= 2 * pair_count(); n *= 2)
        add_law("database_store", n, time_of_store);
    for (size_t n = 1000; n <= 2 * pair_count(); n *= 2)
        add_law("database_fetch", n, time_of_fetch);
    for (int64_t gigabytes : {2, 20, 200, 2000}) {
        std::string row =
            "law/list_1000_pages_of_gb/" + std::to_string(gigabytes);
        benchmark::RegisterBenchmark(row.c_str(), list_sparse, gigabytes)
            ->UseRealTime();
    }
}

}  // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    add_jobs();
    add_limits();
    add_laws();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
