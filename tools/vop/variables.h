// variables.h: the variables that a subcommand works on.
#ifndef TOVAN_TOOLS_VARIABLES_H
#define TOVAN_TOOLS_VARIABLES_H

namespace vop {

// Takes the flag -f HEAP of a subcommand that has no other.
//   heap      set to the last one; null when there is none
//   result    the arguments behind the flags
char **take_heap_flag(char **arguments, const char **heap);

// Loads the variables.
//   heap      null: from KIVS_FILE or a running kivs -p
void load_variables(const char *heap);

}  // namespace vop

#endif
