// private_lvget.h (private): between the sources that serve variables.
// Builds on: private_lvheap.h.
#ifndef TOVAN_PRIVATE_LVGET_H
#define TOVAN_PRIVATE_LVGET_H

#include "private_lvheap.h"

#include <stddef.h>

namespace [[gnu::visibility("hidden")]] tovan {

// The heap of the build tree's variables, loaded or not. Only lvget changes
// it.
variable_heap *variables();

// The same, loaded.
//   fails     "LOGIC ERROR: %s() called before lvget()" with the caller
const variable_heap *loaded_variables(const char *caller);

// As lvvar(), of a name that other text may follow.
const char *variable_value(const char *name, size_t length);

// The command of the last lvpipe() with a "<" before it: the heap's name in
// messages.
const char *pipe_name();

// Puts the variables that are flagged for it into the environment.
//   fails     "export of kivs %s failed": what came before it is exported
void export_variables(const variable_heap *heap);

// What lvsrcdirs() gave before belongs to an older heap.
void outdate_source_directories();

}  // namespace tovan

#endif
