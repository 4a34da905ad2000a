// savesigs.cc: interrupt and termination around a command.
#include "wait4pid.h"

#include "ident.h"

#include <signal.h>

namespace {

using disposition = void (*)(int);

// Filled by operation 0; a recorded slot holds for the process.
struct saved_pair {
    bool valid;
    disposition interrupt;
    disposition termination;
};
constinit saved_pair saved[2] = {};

// signal() with the semantics of System V.
// Deliberate: a handler comes back reset-on-delivery whatever it was before
// (test handlers_come_back_with_system_v_semantics).
//   result    the disposition until now
disposition set_signal(int number, disposition wanted) {
    struct sigaction next = {};
    struct sigaction last = {};
    next.sa_handler = wanted;
    next.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
    sigaction(number, &next, &last);
    return last.sa_handler;
}

}  // namespace

void savesigs(int slot, int operation) {
    saved_pair &pair = saved[slot];
    if (operation == 0) {
        pair.interrupt = set_signal(SIGINT, SIG_IGN);
        pair.termination = set_signal(SIGTERM, SIG_IGN);
        pair.valid = true;
    }
    if (!pair.valid) return;
    bool ignoring = operation == -1;
    set_signal(SIGINT, ignoring ? SIG_IGN : pair.interrupt);
    set_signal(SIGTERM, ignoring ? SIG_IGN : pair.termination);
}

TOVAN_IDENT(savesigs, "8.4", "26/11/21")
