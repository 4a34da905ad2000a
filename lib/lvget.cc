// lvget.cc: the build tree's variables are loaded.
#include "lvget.h"

#include "errexit.h"
#include "ident.h"
#include "private_io.h"
#include "private_lvget.h"
#include "wait4pid.h"

#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

using tovan::variable_heap;

namespace {

struct heap_source {
    int descriptor;
    const char *name;  // in messages
    bool stays_open;
    pid_t writer;  // of a pipe; 0 for anything else
};

heap_source open_heap(const char *file) {
    int descriptor = errcheck(tovan::open_file(file, O_RDONLY), file);
    return {descriptor, file, false, 0};
}

heap_source choose_source(int r, const char *d, const char *file,
                          const char *c) {
    if (file != nullptr && strcmp(file, "-") == 0) {
        return {STDIN_FILENO, file, true, 0};
    }
    if (file != nullptr) return open_heap(file);
    // Chosen: an empty KIVS_FILE is a name like any other, and d or c given as
    // "" is given: only what is absent counts as absent.
    const char *prepared = getenv("KIVS_FILE");
    bool is_plain = r == 0 && d == nullptr && c == nullptr;
    if (prepared != nullptr && is_plain) return open_heap(prepared);
    pid_t writer = 0;
    int descriptor = lvpipe(r, d, &writer, c);
    return {descriptor, tovan::pipe_name(), false, writer};
}

void finish_source(const heap_source *source) {
    if (!source->stays_open) close(source->descriptor);
    if (source->writer == 0) return;
    int status = 0;
    if (waitforpid(source->writer, &status) == -1 || status != 0) {
        errexit("kivs -p aborted");
    }
}

}  // namespace

void lvget(int r, const char *d, int reload, const char *file, const char *c) {
    variable_heap *heap = tovan::variables();
    lvvarrtn = lvvar;
    if (tovan::is_loaded(heap) && reload == 0) return;
    tovan::free_heap(heap);
    tovan::outdate_source_directories();
    heap_source source = choose_source(r, d, file, c);
    tovan::read_heap(heap, source.descriptor, source.name);
    finish_source(&source);
    tovan::index_heap(heap, source.name);
    tovan::export_variables(heap);
}

TOVAN_IDENT(lvget, "8.4", "26/11/21")
