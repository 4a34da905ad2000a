// terminal.h: a terminal of its own for a child.
#ifndef TOVAN_TESTS_TERMINAL_H
#define TOVAN_TESTS_TERMINAL_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <unistd.h>

namespace support {

// The first end of a terminal of a file system of its own, which nobody else
// sees: for a changed root without /dev/pts. Takes root, as that does.
inline int open_private_terminal() {
    int system = fsopen("devpts", FSOPEN_CLOEXEC);
    fsconfig(system, FSCONFIG_SET_STRING, "ptmxmode", "0666", 0);
    fsconfig(system, FSCONFIG_CMD_CREATE, nullptr, nullptr, 0);
    int mount = fsmount(system, FSMOUNT_CLOEXEC, 0);
    int first_end = openat(mount, "ptmx", O_RDWR | O_NOCTTY | O_CLOEXEC);
    close(mount);
    close(system);
    return first_end;
}

// What a child writes to an end that it opens is read from `master`.
struct terminal {
    int master;

    terminal() : master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        if (master == -1) master = open_private_terminal();
        EXPECT_EQ(unlockpt(master), 0) << "a terminal takes /dev/pts, or root";
    }
    ~terminal() {
        close(master);
    }
    terminal(const terminal &) = delete;
    terminal &operator=(const terminal &) = delete;

    int open_end() const {
        return ioctl(master, TIOCGPTPEER, O_RDWR | O_NOCTTY);
    }
};

}  // namespace support

#endif
