// keyed_fuzz.cc: keyed databases, made anew or of any content, under a program
// of additions, removals and look-ups; what was made anew stands beside a map.
#include "fuzz.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <tovan/kdbminit.h>
#include <tovan/ldbminit.h>
#include <unistd.h>
#include <map>
#include <string>

namespace {

void require(bool holds) {
    if (!holds) abort();
}

// The input, byte after byte; zeros behind its end.
struct input {
    const uint8_t *next;
    const uint8_t *end;

    bool is_empty() const {
        return next == end;
    }
    unsigned byte() {
        return is_empty() ? 0 : *next++;
    }
    std::string bytes(size_t count) {
        size_t left = static_cast<size_t>(end - next);
        count = count < left ? count : left;
        std::string taken(reinterpret_cast<const char *>(next), count);
        next += count;
        return taken;
    }
};

// The three files of the one database, in memory, under names on disk that
// lead there.
struct memory_files {
    char folder[32] = "/tmp/keyed-fuzz-XXXXXX";
    std::string name;
    int dir = memfd_create("dir", 0);
    int pag = memfd_create("pag", 0);
    int data = memfd_create("data", 0);

    memory_files() {
        require(mkdtemp(folder) != nullptr);
        name = std::string(folder) + "/k";
        lead(".dir", dir);
        lead(".pag", pag);
        lead(".data", data);
    }
    ~memory_files() {
        for (const char *suffix : {".dir", ".pag", ".data"})
            unlink((name + suffix).c_str());
        rmdir(folder);
    }
    void lead(const char *suffix, int descriptor) {
        std::string target = "/proc/self/fd/" + std::to_string(descriptor);
        require(symlink(target.c_str(), (name + suffix).c_str()) == 0);
    }
    static void fill(int descriptor, const std::string &bytes) {
        require(ftruncate(descriptor, 0) == 0);
        require(pwrite(descriptor, bytes.data(), bytes.size(), 0) ==
                static_cast<ssize_t>(bytes.size()));
    }
};

// Few keys, short ones and such as make pages split.
std::string key_from(input *in) {
    unsigned choice = in->byte();
    std::string key(1, static_cast<char>('a' + choice % 16));
    return key + std::string(choice / 16 * 20, 'k');
}

std::string text_from(input *in) {
    unsigned choice = in->byte();
    return std::string(choice, static_cast<char>(' ' + choice % 90));
}

// Both kinds of database take the same operations.
struct texts_under_test {
    kdbm_db db{};
    std::map<std::string, std::string> model;

    const char *open(const char *name, int mode) {
        return kdbminit(&db, name, mode);
    }
    std::string find(const std::string &key) {
        const dbm_datum *found = kdbmfind(&db, key.c_str());
        if (found == nullptr) return "";
        // Copied: every byte is readable.
        return std::string(found->data, static_cast<size_t>(found->length));
    }
    int add(const std::string &key, const std::string &text, bool joins) {
        int result =
            kdbmadd(&db, key.c_str(), text.c_str(), joins ? ',' : '\0');
        if (result != 0) return result;
        std::string &old = model[key];
        bool has_old = joins && !old.empty();
        if (has_old) old.back() = ',';
        old = (has_old ? old : "") + text + '\0';
        return 0;
    }
    int remove(const std::string &key) {
        return kdbmadd(&db, key.c_str(), nullptr, 0);
    }
};

std::string delivered;

void take_line(const char *, const char *line) {
    delivered += line;
}

struct lines_under_test {
    ldbm_db db{};
    std::map<std::string, std::string> model;

    const char *open(const char *name, int mode) {
        return ldbminit(&db, name, mode, take_line);
    }
    std::string find(const std::string &key) {
        delivered.clear();
        ldbmfind(&db, key.c_str());
        return delivered;
    }
    int add(const std::string &key, const std::string &text, bool) {
        int result = ldbmadd(&db, key.c_str(), text.c_str());
        if (result == 0) model[key] += text + "\n";
        return result;
    }
    int remove(const std::string &key) {
        if (db.handle == nullptr) return -1;
        return dbm_delete(db.handle, {const_cast<char *>(key.c_str()),
                                      static_cast<int>(key.size() + 1)});
    }
};

// One operation. In a database that was made anew everything is as in the
// map, except that an addition may be refused, which changes nothing.
template <typename Database>
void operate(Database *tested, input *in, const char *name, bool is_known) {
    unsigned operation = in->byte();
    std::string key = key_from(in);
    if (operation % 8 < 5) {
        tested->add(key, text_from(in), operation % 2 != 0);
    } else if (operation % 8 == 5) {
        bool was_there = tested->model.count(key) != 0;
        int result = tested->remove(key);
        require(!is_known || (result == 0) == was_there);
        tested->model.erase(key);
    } else if (operation % 8 == 6) {
        const char *message = tested->open(name, 2);
        require(!is_known || message == nullptr);
    }
    std::string found = tested->find(key);
    auto known = tested->model.find(key);
    std::string expected = known != tested->model.end() ? known->second : "";
    require(!is_known || found == expected);
}

template <typename Database>
void run_program(input *in, const char *name, bool is_known) {
    Database tested;
    const char *message = tested.open(name, is_known ? 1 : 2);
    require(!is_known || message == nullptr);
    for (int i = 0; i < 200 && !in->is_empty(); ++i)
        operate(&tested, in, name, is_known);
    if (is_known) {
        require(tested.open(name, 3) == nullptr);
        for (const auto &[key, text] : tested.model)
            require(tested.find(key) == text);
    }
    tested.open(name, 0);
}

void fill_files(const memory_files &files, input *in) {
    memory_files::fill(files.dir, in->bytes(in->byte()));
    std::string pages;
    for (unsigned count = in->byte() % 5; count > 0; --count) {
        std::string head = in->bytes(in->byte());
        std::string tail = in->bytes(in->byte());
        head.resize(1024 - (tail.size() < 1024 ? tail.size() : 1024));
        pages += head + tail;
    }
    memory_files::fill(files.pag, pages);
    memory_files::fill(files.data, in->bytes(in->byte()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static memory_files files;
    input in{data, data + size};
    unsigned kind = in.byte();
    bool is_known = kind % 2 != 0;
    if (!is_known) fill_files(files, &in);
    const char *name = files.name.c_str();
    if (kind % 4 < 2)
        run_program<texts_under_test>(&in, name, is_known);
    else
        run_program<lines_under_test>(&in, name, is_known);
    return 0;
}
