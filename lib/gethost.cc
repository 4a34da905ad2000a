// gethost.cc: the host's name.
#include "gethome.h"

#include "errexit.h"
#include "ident.h"

#include <unistd.h>

namespace {

// Filled by the first get_host() that succeeds; never released.
struct host_state {
    bool known;
    char name[64];
};
constinit host_state host{};

}  // namespace

const char *get_host(void) {
    if (host.known) return host.name;
    if (gethostname(host.name, sizeof host.name) == -1)
        errexit("gethostname() failed");
    // A system may cut a longer name without ending it.
    host.name[sizeof host.name - 1] = '\0';
    host.known = true;
    return host.name;
}

TOVAN_IDENT(gethost, "8.4", "26/11/21")
