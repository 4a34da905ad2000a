// trtab.cc: the traits file and its table.
#include "trait.h"

#include "chkalloc.h"
#include "dystr.h"
#include "errexit.h"
#include "execstr.h"
#include "findfile.h"
#include "gethome.h"
#include "ident.h"
#include "private_error.h"
#include "private_io.h"
#include "private_lvheap.h"
#include "private_trait.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace {

enum load_state { not_tried = 0, loaded = 1, failed = -1 };

// The traits of this host. The name is filled by traits_file(), the rest by
// readtab(), each once; never released.
struct traits_state {
    const char *file;
    bool file_from_environment;
    load_state load;
    tovan::variable_heap table;
};
constinit traits_state traits{};

constexpr char mktraits_failed[] = "mktraits -u failed";

// Runs "mktraits -u" on our own standard descriptors.
bool make_traits() {
    static char program[] = "mktraits";
    static char update[] = "-u";
    char *argv[] = {nullptr, program, update, nullptr};
    return forkcmmd(0, 1, 2, argv + 1) == 0;
}

void begin_warning() {
    if (progname != nullptr) eprintf("%s: ", progname);
}

// A file that cannot be read: makes it when it is missing.
//   result    whether it should be readable now
bool recover(const char *file) {
    if (traits.file_from_environment) {
        errexit("%s ($TRAITS_FILE): cannot open, %s", file, syserr());
    }
    if (errno != ENOENT) {
        const char *reason = syserr();
        begin_warning();
        tovan::error("Warning: %s not readable (%s)", file, reason);
        return false;
    }
    if (make_traits()) return true;
    begin_warning();
    tovan::error("Warning: %s", mktraits_failed);
    return false;
}

load_state load_table() {
    const char *file = traits_file(0);
    if (access(file, R_OK) == -1 && !recover(file)) return failed;
    int descriptor = errcheck(tovan::open_file(file, O_RDONLY), file);
    tovan::read_heap(&traits.table, descriptor, file);
    close(descriptor);
    tovan::index_heap(&traits.table, file);
    return loaded;
}

// The host's file in the folder of all traits.
const char *file_of_host() {
    char *folder = findfile("data/traits", "%MORVA", 0);
    if (folder == nullptr) {
        errexit("<morva-root>/data/traits directory does not exist");
    }
    const char *host = get_host();
    dy name = {};
    dynew(&name, 0);
    dyfmt(&name, "@s/@S.tab", folder, host, host + strcspn(host, "."));
    free(folder);
    return name.buffer;
}

}  // namespace

const char *traits_file(int) {
    if (traits.file != nullptr) return traits.file;
    const char *named = getenv("TRAITS_FILE");
    traits.file_from_environment = named != nullptr;
    traits.file = named != nullptr ? savestr(named) : file_of_host();
    return traits.file;
}

int readtab(void) {
    if (traits.load == not_tried) traits.load = load_table();
    return traits.load == loaded;
}

const tovan::variable_heap *tovan::traits_table() {
    return readtab() != 0 ? &traits.table : nullptr;
}

const char *trvar(const char *name) {
    if (readtab() == 0) return nullptr;
    const tovan::heap_entry *entry = tovan::find_entry(&traits.table, name);
    return entry != nullptr ? tovan::entry_value(entry) : nullptr;
}

TOVAN_IDENT(trtab, "8.4", "26/11/21")
