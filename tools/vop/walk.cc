// walk.cc: files and everything below directories.
#include "vop/walk.h"

#include <dirent.h>
#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/chkalloc.h>
#include <tovan/dypadd.h>
#include <tovan/dystr.h>
#include <tovan/errexit.h>
#include <tovan/strutil.h>

namespace {

// A directory whose names are being visited.
struct folder {
    dyp names;
    int next;         // of the names
    int path_length;  // of the directory
};

// A walk. Depth is the tree's affair: directories wait on a stack, closed.
struct walk_state {
    vop::visitor visit;
    dy path;
    dyd folders;
    bool was_complete;
};

void report(walk_state *walk) {
    eprintf("%s: %s: %s\n", progname, walk->path.buffer, syserr());
    walk->was_complete = false;
}

bool is_own_name(const char *name) {
    return strcmp(name, ".") == 0 || strcmp(name, "..") == 0;
}

// The names of an open directory, sorted.
//   result    false, with errno, when not all could be read
bool read_names(DIR *stream, dyp *names) {
    errno = 0;
    while (const dirent *entry = readdir(stream)) {
        if (!is_own_name(entry->d_name)) dypadd(names, savestr(entry->d_name));
        errno = 0;
    }
    int reason = errno;
    if (names->count > 1)
        qsort(names->array, static_cast<size_t>(names->count), sizeof(void *),
              [](const void *a, const void *b) {
                  return strcmp(*static_cast<char *const *>(a),
                                *static_cast<char *const *>(b));
              });
    errno = reason;
    return reason == 0;
}

void enter(walk_state *walk) {
    DIR *stream = opendir(walk->path.buffer);
    if (stream == nullptr) return report(walk);
    folder entered{{}, 0, walk->path.length};
    if (!read_names(stream, &entered.names)) report(walk);
    closedir(stream);
    dydadd(&walk->folders, &entered);
}

void visit_path(walk_state *walk, bool goes_down) {
    struct stat status;
    if (lstat(walk->path.buffer, &status) == -1) return report(walk);
    walk->visit(walk->path.buffer, &status);
    if (goes_down && S_ISDIR(status.st_mode)) enter(walk);
}

// The directory at the top of the stack, or null.
folder *top(walk_state *walk) {
    int count = walk->folders.count;
    if (count == 0) return nullptr;
    return static_cast<folder *>(walk->folders.data) + count - 1;
}

void leave(walk_state *walk) {
    free(top(walk)->names.array);
    walk->folders.count--;
}

void visit_next(walk_state *walk) {
    folder *current = top(walk);
    if (current->next == current->names.count) return leave(walk);
    char *name = static_cast<char *>(current->names.array[current->next++]);
    dytruncate(&walk->path, current->path_length);
    dyaddslash(&walk->path);
    dystr(&walk->path, name);
    free(name);
    visit_path(walk, true);
}

}  // namespace

bool vop::walk(const char *root, bool goes_down, visitor visit) {
    walk_state state{visit, {}, {}, true};
    size_t length = strlen(root);
    while (length > 1 && root[length - 1] == '/')
        length--;
    dynew(&state.path, 256);
    dynstr(&state.path, root, static_cast<int>(length));
    dydnew(&state.folders, 16, sizeof(folder));
    visit_path(&state, goes_down);
    while (top(&state) != nullptr)
        visit_next(&state);
    free(state.path.buffer);
    free(state.folders.data);
    return state.was_complete;
}
