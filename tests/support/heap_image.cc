// heap_image.cc: variable heaps byte by byte.
#include "support/heap_image.h"

#include <tovan/lvheap.h>

namespace support {

namespace {

std::string big_endian(uint32_t value, int width) {
    std::string bytes;
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) {
        bytes += static_cast<char>(value >> shift);
    }
    return bytes;
}

}  // namespace

int bucket_of(const std::string &name) {
    unsigned h = 0;
    for (char c : name)
        h = lvhshtab[h ^ static_cast<unsigned char>(c)];
    return static_cast<int>(h);
}

uint32_t heap_image::add(const std::string &name, const std::string &value,
                         int flags) {
    return add_to(bucket_of(name), name, value, flags);
}

uint32_t heap_image::add_to(int bucket, const std::string &name,
                            const std::string &value, int flags) {
    uint32_t position = add_loose(name, value, flags);
    if (tails_[bucket] == 0) {
        heads[bucket] = position;
    } else {
        set_next(tails_[bucket], position);
    }
    tails_[bucket] = position;
    return position;
}

uint32_t heap_image::add_loose(const std::string &name,
                               const std::string &value, int flags) {
    uint32_t position = static_cast<uint32_t>(heap.size() / 8);
    heap += big_endian(0, 4);
    heap += big_endian(static_cast<uint32_t>(name.size() + 1), 2);
    heap += static_cast<char>(flags);
    heap += name + '\0' + value + '\0';
    heap.resize((heap.size() + 7) / 8 * 8);
    return position;
}

void heap_image::set_next(uint32_t position, uint32_t next) {
    heap.replace(position * 8, 4, big_endian(next, 4));
}

void heap_image::set_distance(uint32_t position, uint32_t distance) {
    heap.replace(position * 8 + 4, 2, big_endian(distance, 2));
}

uint32_t heap_image::next(uint32_t position) const {
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) {
        value = value << 8 | static_cast<unsigned char>(heap[position * 8 + i]);
    }
    return value;
}

std::string heap_image::bytes() const {
    return bytes_claiming(static_cast<uint32_t>(heap.size()));
}

std::string heap_image::bytes_claiming(uint32_t size) const {
    std::string all = magic + std::string(2, '\0');
    all += big_endian(generation_seek, 4) + big_endian(generation_lines, 4);
    all += big_endian(size, 4) + big_endian(0, 4);
    for (uint32_t head : heads)
        all += big_endian(head, 4);
    return all + heap;
}

std::string heap_of(const std::vector<variable> &variables) {
    heap_image image;
    for (const variable &v : variables)
        image.add(v.name, v.value, v.flags);
    return image.bytes();
}

}  // namespace support
