// database.cc: databases in tests, in terms of std::string.
#include "support/database.h"

#include <random>
#include <unordered_map>

namespace support {

dbm_datum item_of(const std::string &bytes) {
    return {const_cast<char *>(bytes.data()), static_cast<int>(bytes.size())};
}

std::optional<std::string> bytes_of(dbm_datum item) {
    if (item.data == nullptr) return std::nullopt;
    return std::string(item.data, static_cast<size_t>(item.length));
}

database::database(const std::string &base, int page_kb, int flags) {
    if (page_kb != 0) flags |= O_CREAT | O_TRUNC;
    handle_ = dbm_prep((base + ".dir").c_str(), (base + ".pag").c_str(),
                       page_kb, flags, 0666);
}

database::~database() {
    close();
}

void database::close() {
    if (handle_ != nullptr) dbm_close(handle_);
    handle_ = nullptr;
}

int database::put(const std::string &key, const std::string &value, int mode) {
    return dbm_store(handle_, item_of(key), item_of(value), mode);
}

std::optional<std::string> database::get(const std::string &key) {
    return bytes_of(dbm_fetch(handle_, item_of(key)));
}

int database::remove(const std::string &key) {
    return dbm_delete(handle_, item_of(key));
}

std::vector<std::string> database::keys() {
    std::vector<std::string> all;
    dbm_datum key = dbm_firstkey(handle_);
    for (; key.data != nullptr; key = dbm_nextkey(handle_))
        all.push_back(*bytes_of(key));
    return all;
}

// Two texts of one length and hash, by trying; rows of them have one hash, too.
std::vector<std::string> keys_of_one_hash(size_t count) {
    std::unordered_map<uint32_t, std::string> met;
    std::string other;
    std::string text;
    std::mt19937_64 random(1);
    while (other.empty()) {
        uint64_t mixed = random();
        text.assign(reinterpret_cast<const char *>(&mixed), sizeof mixed);
        auto [place, is_new] = met.emplace(dbm_hash(text.data(), 8), text);
        if (!is_new) other = place->second;
    }
    std::vector<std::string> keys(count);
    for (size_t i = 0; i < count; ++i) {
        for (size_t digit = 1; digit < count; digit *= 2)
            keys[i] += (i & digit) != 0 ? text : other;
    }
    return keys;
}

std::string page_of(
    const std::vector<std::pair<std::string, std::string>> &pairs,
    size_t size) {
    std::vector<int> words = {static_cast<int>(2 * pairs.size())};
    std::string items;
    for (const auto &[key, value] : pairs) {
        items.insert(0, key);
        words.push_back(static_cast<int>(size - items.size()));
        items.insert(0, value);
        words.push_back(static_cast<int>(size - items.size()));
    }
    std::string page = raw_page(words, size);
    return page.replace(size - items.size(), items.size(), items);
}

std::string raw_page(const std::vector<int> &words, size_t size) {
    std::string page(size, '\0');
    for (size_t i = 0; i < words.size() && 2 * i + 1 < size; ++i) {
        page[2 * i] = static_cast<char>(words[i] >> 8);
        page[2 * i + 1] = static_cast<char>(words[i]);
    }
    return page;
}

}  // namespace support
