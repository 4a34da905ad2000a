// progress.h: a line on the terminal about work that takes long.
//
//     tools::start_progress();
//     for each item: tools::note_progress(name, size);
//     tools::end_progress();
//
// It appears on standard error after a second, is brought up to date four
// times a second, and is gone in the end. Where standard error is no terminal,
// or a dumb one, or NO_COLOR asks for plain text, nothing happens.
#ifndef TOVAN_TOOLS_PROGRESS_H
#define TOVAN_TOOLS_PROGRESS_H

namespace tools {

void start_progress();

// Says what is being worked on now, and how many bytes it brings.
void note_progress(const char *name, long long size);

void end_progress();

}  // namespace tools

#endif
