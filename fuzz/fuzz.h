// fuzz.h: what every fuzz target needs: fatal errors that come back, and no
// chatter.
#ifndef TOVAN_FUZZ_FUZZ_H
#define TOVAN_FUZZ_FUZZ_H

#include <fcntl.h>
#include <setjmp.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string>
#include <tovan/errexit.h>
#include <unistd.h>

namespace fuzz {

inline jmp_buf way_back;

inline void come_back(int) {
    longjmp(way_back, 1);
}

// Runs `body`; true when it returned, false when it ended in a fatal message.
// What the body allocated before a fatal message is lost: run with
// -detect_leaks=0.
template <typename Body>
bool survives(Body body) {
    progname = "fuzz";
    set_exit_rtn(come_back);
    if (setjmp(way_back) != 0) return false;
    body();
    return true;
}

// Sends standard error (and output) of the library nowhere, once.
inline void silence() {
    static bool done = false;
    if (done) return;
    done = true;
    if (freopen("/dev/null", "w", stdout) == nullptr) _exit(1);
    if (freopen("/dev/null", "w", stderr) == nullptr) _exit(1);
}

}  // namespace fuzz

#endif
