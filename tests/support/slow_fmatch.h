// slow_fmatch.h: the rules of file-name patterns by plain recursion: slow,
// obvious, and with every message.
#ifndef TOVAN_TESTS_SLOW_FMATCH_H
#define TOVAN_TESTS_SLOW_FMATCH_H

#include <limits.h>
#include <string>
#include <vector>

namespace support {

class slow_fmatch {
  public:
    explicit slow_fmatch(bool traced) : traced_(traced) {
    }

    int match(const std::string &subject, const std::string &pattern);

    // What the real one writes to standard error.
    std::string messages;

    // Recursive steps of the last match, and how many it may take: beyond
    // that every step fails.
    long steps = 0;
    long most_steps = LONG_MAX;

    bool gave_up() const {
        return steps > most_steps;
    }

  private:
    using stack = std::vector<size_t>;

    bool step(size_t p, size_t f, int level, int mark, stack open);
    bool star(size_t p, size_t f, int level, const stack &open);
    bool brace(size_t p, size_t f, int level, const stack &open);
    bool class_holds(size_t *p, unsigned char byte) const;
    size_t close_of(size_t p) const;
    size_t next_comma(size_t p) const;
    void trace(const char *sign, size_t p, size_t f, int code,
               const stack &open);

    bool traced_;
    std::string pattern_;
    std::string subject_;
};

}  // namespace support

#endif
