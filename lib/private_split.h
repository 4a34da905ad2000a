// private_split.h (private): a command line to words.
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_SPLIT_H
#define TOVAN_PRIVATE_SPLIT_H

#include "dypadd.h"

namespace [[gnu::visibility("hidden")]] tovan {

// Splits a command line where it stands, without running anything.
//   line      overwritten: the words are built in it, each with a null
//   words     the address of each word is added
//   result    false when the line needs a shell: the line is spoilt then,
//             and what was added to words means nothing
bool split_line(char *line, dyp *words);

}  // namespace tovan

#endif
