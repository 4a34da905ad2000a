// private_exit.h (private): how a forked child ends.
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_EXIT_H
#define TOVAN_PRIVATE_EXIT_H

namespace [[gnu::visibility("hidden")]] tovan {

// Called in a child that shares the parent's buffers and exit handlers: from
// then on lclexit() runs the exit hook, flushes standard output and standard
// error and ends with _exit().
void leave_through_exit_now();

}  // namespace tovan

#endif
