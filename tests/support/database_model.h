// database_model.h: a second opinion on the bytes of a database: slow, obvious
// and without files.
#ifndef TOVAN_TESTS_DATABASE_MODEL_H
#define TOVAN_TESTS_DATABASE_MODEL_H

#include <stdint.h>
#include <sys/types.h>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace support {

class database_model {
  public:
    explicit database_model(int page_kb);

    // As dbm_store() and dbm_delete(): 0, 1 or -1.
    int store(const std::string &key, const std::string &value, bool replace);
    int remove(const std::string &key);

    // The directory file.
    const std::string &directory() const {
        return directory_;
    }
    // Where a page file differs from what it should hold: an empty text when
    // it does not. Holes count as the zeros that they are.
    std::string flaw_of_pages(const std::string &path) const;

  private:
    using pair_list = std::vector<std::pair<std::string, std::string>>;
    struct place {
        uint64_t bit;
        int depth;
        uint32_t page;
    };

    place find(uint32_t hash) const;
    std::string flaw_of_pages(int file) const;
    bool bit(uint64_t number) const;
    void set_bit(uint64_t number);
    std::string page(uint32_t number) const;
    pair_list pairs_of(const std::string &page) const;
    bool fit(const pair_list &pairs) const;
    bool have_offsets(const pair_list &pairs) const;
    // The page after these pairs were laid out over what it held.
    std::string laid_out(std::string page, const pair_list &pairs) const;
    int split(place at, uint32_t hash, const pair_list &before,
              const std::pair<std::string, std::string> &added);

    size_t page_size_;
    uint64_t directory_bits_ = 0;
    std::string directory_;
    std::map<uint32_t, std::string> pages_;
};

// The hash by its definition.
uint32_t model_hash(const std::string &key);

}  // namespace support

#endif
