// crowd.h: texts made up to get into each other's way in tables of hashes.
#ifndef TOVAN_TESTS_CROWD_H
#define TOVAN_TESTS_CROWD_H

#include <stdint.h>
#include <string.h>
#include <tovan/private_hash.h>
#include <string>
#include <vector>

namespace support {

// Texts of 16 bytes with one tag: their second half takes away whatever the
// first one would say.
inline std::vector<std::string> equal_tags(size_t count) {
    std::vector<std::string> texts;
    for (size_t i = 0; i < count; ++i) {
        char half[8];
        memcpy(half, &tovan::hashing::odd_2, sizeof half);
        std::string text = std::to_string(10000000 + i);
        texts.push_back(text.append(half, sizeof half));
    }
    return texts;
}

// Identifiers that share their first place in tables of up to 512 texts, and
// two or four of them in larger ones.
inline std::vector<std::string> equal_places(size_t count) {
    constexpr uint32_t end_of_tags = uint32_t{1} << 22;
    std::vector<std::string> texts;
    for (unsigned i = 0; texts.size() < count; ++i) {
        std::string text = "n" + std::to_string(i);
        if (tovan::text_tag(text.data(), text.size()) < end_of_tags)
            texts.push_back(text);
    }
    return texts;
}

}  // namespace support

#endif
