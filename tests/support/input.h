// input.h: streams and descriptors that deliver given bytes.
#ifndef TOVAN_TESTS_INPUT_H
#define TOVAN_TESTS_INPUT_H

#include <stdio.h>
#include <sys/types.h>
#include <string>
#include <vector>

namespace support {

// A stream at the start of these bytes.
class input_stream {
  public:
    explicit input_stream(const std::string &bytes);
    ~input_stream();
    input_stream(const input_stream &) = delete;
    input_stream &operator=(const input_stream &) = delete;
    operator FILE *() const {
        return stream_;
    }

  private:
    FILE *stream_;
};

// A descriptor at the start of these bytes. Given in pieces, they come
// through a pipe, and a read gets no more than one piece.
class input_descriptor {
  public:
    explicit input_descriptor(const std::string &bytes);
    explicit input_descriptor(const std::vector<std::string> &pieces);
    ~input_descriptor();
    input_descriptor(const input_descriptor &) = delete;
    input_descriptor &operator=(const input_descriptor &) = delete;
    operator int() const {
        return descriptor_;
    }

  private:
    int descriptor_;
    pid_t writer_ = 0;
};

// The bytes in pieces of n.
std::vector<std::string> in_pieces(const std::string &bytes, size_t n);

}  // namespace support

#endif
