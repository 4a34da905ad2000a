// heap_image.h: variable heaps byte by byte, sound ones and damaged ones.
#ifndef TOVAN_TESTS_HEAP_IMAGE_H
#define TOVAN_TESTS_HEAP_IMAGE_H

#include <stdint.h>
#include <string>
#include <vector>

namespace support {

struct variable {
    std::string name;
    std::string value;
    int flags = 0;
};

// A heap under construction. Everything is open: a test damages what it likes
// before it asks for the bytes.
struct heap_image {
    static constexpr size_t header_size = 1052;

    std::string magic = std::string("LclVars3\n", 10);
    uint32_t generation_seek = 0;
    uint32_t generation_lines = 0;
    uint32_t heads[256] = {};
    std::string heap = std::string(8, '\0');

    // Puts an entry at the end of the heap and of its name's chain.
    //   result    its position, in 8-byte units
    uint32_t add(const std::string &name, const std::string &value,
                 int flags = 0);

    // The same, at the end of a chain of the caller's choice.
    uint32_t add_to(int bucket, const std::string &name,
                    const std::string &value, int flags = 0);

    // An entry that hangs in no chain.
    uint32_t add_loose(const std::string &name, const std::string &value,
                       int flags = 0);

    // The fields of the entry at a position.
    void set_next(uint32_t position, uint32_t next);
    void set_distance(uint32_t position, uint32_t distance);
    uint32_t next(uint32_t position) const;

    // Header and heap; the size that the header states may be a lie.
    std::string bytes() const;
    std::string bytes_claiming(uint32_t size) const;

  private:
    uint32_t tails_[256] = {};
};

// The chain of a name.
int bucket_of(const std::string &name);

// The bytes of a sound heap.
std::string heap_of(const std::vector<variable> &variables);

}  // namespace support

#endif
