// database.h: databases in tests, in terms of std::string.
#ifndef TOVAN_TESTS_DATABASE_H
#define TOVAN_TESTS_DATABASE_H

#include <fcntl.h>
#include <tovan/ddbm.h>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace support {

// The item over these bytes, which must outlive it.
dbm_datum item_of(const std::string &bytes);

// The bytes of an item; none of the null item.
std::optional<std::string> bytes_of(dbm_datum item);

// An open database that closes itself. Where it cannot be opened the handle is
// null.
class database {
  public:
    // Opens <base>.dir and <base>.pag for update, as new files with pages of
    // so many KB; 0: as they are.
    explicit database(const std::string &base, int page_kb = 0,
                      int flags = O_RDWR);
    ~database();
    database(const database &) = delete;
    database &operator=(const database &) = delete;

    dbm_handle *operator->() const {
        return handle_;
    }
    operator dbm_handle *() const {
        return handle_;
    }
    void close();

    int put(const std::string &key, const std::string &value, int mode = 1);
    std::optional<std::string> get(const std::string &key);
    int remove(const std::string &key);

    // All keys in the order of the iteration.
    std::vector<std::string> keys();

  private:
    dbm_handle *handle_;
};

// So many different keys of one length with one hash.
std::vector<std::string> keys_of_one_hash(size_t count);

// The bytes of a page with these pairs, and of one with these raw words (the
// count, then the entries).
std::string page_of(
    const std::vector<std::pair<std::string, std::string>> &pairs,
    size_t size = 1024);
std::string raw_page(const std::vector<int> &words, size_t size = 1024);

}  // namespace support

#endif
