// host.h: what a build system wants to know about this host.
#ifndef TOVAN_TOOLS_MKTRAITS_HOST_H
#define TOVAN_TOOLS_MKTRAITS_HOST_H

#include "shared/heap_writer.h"

#include <stddef.h>

namespace mktraits {

constexpr size_t most_traits = 16;

struct trait_list {
    tools::heap_variable traits[most_traits];
    size_t count;
};

// Asks the host for everything; what it does not know is left out. Values
// are the caller's, until the process ends.
trait_list ask_host();

}  // namespace mktraits

#endif
