// database_model.cc: a second opinion on the bytes of a database.
#include "support/database_model.h"

#include <fcntl.h>
#include <unistd.h>
#include <algorithm>
#include <set>

namespace support {

namespace {

constexpr size_t block = 4096;

template <typename Pairs>
auto with_key(Pairs &pairs, const std::string &key) {
    return std::find_if(pairs.begin(), pairs.end(),
                        [&](const auto &pair) { return pair.first == key; });
}

template <typename Pairs>
Pairs without(Pairs pairs, const std::string &key) {
    auto found = with_key(pairs, key);
    if (found != pairs.end()) pairs.erase(found);
    return pairs;
}

int word_at(const std::string &page, size_t at) {
    auto high = static_cast<unsigned char>(page[at]);
    auto low = static_cast<unsigned char>(page[at + 1]);
    return high * 256 + low;
}

void put_word(std::string *page, size_t at, size_t value) {
    (*page)[at] = static_cast<char>(value / 256);
    (*page)[at + 1] = static_cast<char>(value % 256);
}

}  // namespace

uint32_t model_hash(const std::string &key) {
    uint64_t hash = 0;
    for (char c : key) {
        int64_t addend = static_cast<unsigned char>(c);
        if (addend >= 128) addend -= 256;
        hash = (hash * 65599 + static_cast<uint64_t>(addend)) % (1ull << 32);
    }
    return static_cast<uint32_t>(hash);
}

database_model::database_model(int page_kb)
    : page_size_(static_cast<size_t>(page_kb) * 1024),
      directory_(1, static_cast<char>(page_kb)) {
}

bool database_model::bit(uint64_t number) const {
    size_t at = number / 8 + 1;
    return number < directory_bits_ && at < directory_.size() &&
           (directory_[at] >> number % 8 & 1) != 0;
}

void database_model::set_bit(uint64_t number) {
    while (number >= directory_bits_)
        directory_bits_ += block * 8;
    size_t at = number / 8 + 1;
    size_t end = (at / block + 1) * block;
    if (directory_.size() < end) directory_.resize(end);
    directory_[at] = static_cast<char>(directory_[at] | 1 << number % 8);
}

database_model::place database_model::find(uint32_t hash) const {
    place at{0, 0, 0};
    while (bit(at.bit)) {
        bool second = (hash >> at.depth & 1) != 0;
        at.bit = 2 * at.bit + (second ? 2 : 1);
        if (second) at.page += 1u << at.depth;
        ++at.depth;
    }
    return at;
}

std::string database_model::page(uint32_t number) const {
    auto found = pages_.find(number);
    return found != pages_.end() ? found->second : std::string(page_size_, 0);
}

std::string database_model::flaw_of_pages(const std::string &path) const {
    int file = open(path.c_str(), O_RDONLY);
    std::string flaw = flaw_of_pages(file);
    close(file);
    return flaw;
}

std::string database_model::flaw_of_pages(int file) const {
    auto size = static_cast<off_t>(page_size_);
    off_t end = pages_.empty() ? 0 : (pages_.rbegin()->first + off_t{1}) * size;
    if (lseek(file, 0, SEEK_END) != end) return "wrong size";
    std::set<off_t> looked_at;
    for (const auto &[number, bytes] : pages_)
        looked_at.insert(number);
    for (off_t at = 0; (at = lseek(file, at, SEEK_DATA)) != -1; at += size) {
        at -= at % size;
        looked_at.insert(at / size);
    }
    for (off_t number : looked_at) {
        std::string found(page_size_, '\0');
        pread(file, found.data(), page_size_, number * size);
        if (found != page(static_cast<uint32_t>(number)))
            return "page " + std::to_string(number);
    }
    return "";
}

database_model::pair_list database_model::pairs_of(
    const std::string &page) const {
    pair_list pairs;
    size_t boundary = page_size_;
    auto next_item = [&](size_t entry) {
        auto start = static_cast<size_t>(word_at(page, 2 * entry));
        std::string item = page.substr(start, boundary - start);
        boundary = start;
        return item;
    };
    for (size_t entry = 1; entry < static_cast<size_t>(word_at(page, 0));) {
        std::string key = next_item(entry++);
        std::string value = next_item(entry++);
        pairs.emplace_back(key, value);
    }
    return pairs;
}

bool database_model::fit(const pair_list &pairs) const {
    size_t used = 2;
    for (const auto &[key, value] : pairs)
        used += 4 + key.size() + value.size();
    return used <= page_size_;
}

bool database_model::have_offsets(const pair_list &pairs) const {
    return pairs.empty() || page_size_ - pairs[0].first.size() <= 65535;
}

std::string database_model::laid_out(std::string page,
                                     const pair_list &pairs) const {
    put_word(&page, 0, 2 * pairs.size());
    size_t at = page_size_;
    size_t entry = 1;
    for (const auto &[key, value] : pairs) {
        for (const std::string &item : {key, value}) {
            at -= item.size();
            page.replace(at, item.size(), item);
            put_word(&page, 2 * entry++, at);
        }
    }
    return page;
}

int database_model::store(const std::string &key, const std::string &value,
                          bool replace) {
    if (key.empty() || key.size() + value.size() > page_size_ - 6) return -1;
    uint32_t hash = model_hash(key);
    place at = find(hash);
    std::string bytes = page(at.page);
    pair_list before = pairs_of(bytes);
    bool is_there = with_key(before, key) != before.end();
    if (is_there && !replace) return 1;
    pair_list rest = without(before, key);
    pair_list after = rest;
    after.emplace_back(key, value);
    if (!fit(after)) return split(at, hash, before, {key, value});
    if (!have_offsets(after)) return -1;
    pages_[at.page] = laid_out(laid_out(bytes, rest), after);
    return 0;
}

int database_model::split(place at, uint32_t hash, const pair_list &before,
                          const std::pair<std::string, std::string> &added) {
    const std::string zeros(page_size_, 0);
    pair_list held = before;
    for (int splits = 0; splits < 10; ++splits) {
        uint32_t split_bit = 1u << at.depth;
        pair_list halves[2];
        for (const auto &pair : held)
            halves[(model_hash(pair.first) & split_bit) != 0].push_back(pair);
        bool second = (hash & split_bit) != 0;
        held = halves[second];
        pair_list after = without(held, added.first);
        after.push_back(added);
        bool done = fit(after);
        if (done) halves[second] = after;
        if (!have_offsets(halves[0]) || !have_offsets(halves[1])) return -1;
        pages_[at.page] = laid_out(zeros, halves[0]);
        pages_[at.page + split_bit] = laid_out(zeros, halves[1]);
        set_bit(at.bit);
        if (done) return 0;
        at.bit = 2 * at.bit + (second ? 2 : 1);
        if (second) at.page += split_bit;
        ++at.depth;
    }
    return -1;
}

int database_model::remove(const std::string &key) {
    place at = find(model_hash(key));
    std::string bytes = page(at.page);
    pair_list before = pairs_of(bytes);
    if (with_key(before, key) == before.end()) return -1;
    pair_list after = without(before, key);
    if (!have_offsets(after)) return -1;
    pages_[at.page] = laid_out(bytes, after);
    return 0;
}

}  // namespace support
