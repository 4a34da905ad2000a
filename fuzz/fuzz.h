// fuzz.h: what every fuzz target needs: fatal errors that come back. Run the
// targets with -close_fd_mask=3, so that messages go nowhere.
#ifndef TOVAN_FUZZ_FUZZ_H
#define TOVAN_FUZZ_FUZZ_H

#include <setjmp.h>
#include <stddef.h>
#include <stdint.h>
#include <string>
#include <tovan/errexit.h>

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

}  // namespace fuzz

#endif
