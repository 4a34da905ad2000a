// terminal.h: a terminal of its own for a child.
#ifndef TOVAN_TESTS_TERMINAL_H
#define TOVAN_TESTS_TERMINAL_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>
#include <string>

namespace support {

// The reading end is `master`; `path` is what a child opens.
struct terminal {
    int master;
    std::string path;

    terminal() : master(posix_openpt(O_RDWR | O_NOCTTY)) {
        if (master == -1 || grantpt(master) == -1 || unlockpt(master) == -1)
            return;
        const char *name = ptsname(master);
        if (name != nullptr) path = name;
    }
    ~terminal() {
        close(master);
    }
    terminal(const terminal &) = delete;
    terminal &operator=(const terminal &) = delete;

    int open_end() const {
        return open(path.c_str(), O_RDWR | O_NOCTTY);
    }
};

// Whether there are any: a changed root may have none.
inline bool has_terminals() {
    terminal one;
    int end = one.open_end();
    if (end != -1) close(end);
    return end != -1;
}

}  // namespace support

// For the first line of a test that needs one.
#define SKIP_WITHOUT_TERMINALS() \
    if (!support::has_terminals()) GTEST_SKIP() << "no pseudo-terminals here"

#endif
