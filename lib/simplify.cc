// simplify.cc: paths made plain.
#include "simplify.h"

#include "ident.h"
#include "opentmp.h"
#include "private_trait.h"
#include "strutil.h"

#include <string.h>

namespace {

// Whether "//" is a root. Filled by the first path that begins so; -1 before.
constinit int double_slash_is_root = -1;

bool has_double_root(const char *path) {
    if (path[0] != '/' || path[1] != '/') return false;
    // Chosen: asked only when the answer matters, so that tools which never
    // meet such a path need no traits.
    if (double_slash_is_root == -1)
        double_slash_is_root = tovan::trait("DBLESLASHROOT", 0, 0) != 0;
    return double_slash_is_root != 0;
}

// The path as far as it is built, over the text that was read already.
struct built_path {
    char *root;   // where it begins
    char *start;  // behind the root
    char *end;

    bool is_empty() const {
        return end == start;
    }

    char *last_component() const {
        void *slash = memrchr(start, '/', static_cast<size_t>(end - start));
        return slash != nullptr ? static_cast<char *>(slash) + 1 : start;
    }

    bool ends_in_parent() const {
        const char *last = last_component();
        return end - last == 2 && last[0] == '.' && last[1] == '.';
    }

    // The "/.." that was read last lies behind: there is room to end it.
    bool is_symbolic_link() const {
        *end = '\0';
        return issymlink(root) != 0;
    }

    void add(const char *component, size_t length) {
        if (!is_empty()) *end++ = '/';
        memmove(end, component, length);
        end += length;
    }

    void remove_last() {
        end = last_component();
        if (end > start) end--;
    }
};

// What ".." does: true when it is done, false when it has to stay.
bool step_up(built_path *built, bool checks_links) {
    if (built->is_empty()) return built->start > built->root;
    if (built->ends_in_parent()) return false;
    if (checks_links && built->is_symbolic_link()) return false;
    built->remove_last();
    return true;
}

}  // namespace

char *simplify(char *path, int check_symlinks) {
    if (*path == '\0') return path;
    int slashes = p_rootlen(path);
    int root = has_double_root(path) ? 2 : slashes > 0;
    built_path built = {path, path + root, path + root};
    const char *next = path + slashes;
    while (*next != '\0') {
        const char *component = next;
        size_t length = strcspn(component, "/");
        next = component + length + strspn(component + length, "/");
        if (length == 1 && component[0] == '.') continue;
        if (length == 2 && memcmp(component, "..", 2) == 0 &&
            step_up(&built, check_symlinks != 0))
            continue;
        built.add(component, length);
    }
    if (built.end == path) *built.end++ = '.';
    *built.end = '\0';
    return path;
}

TOVAN_IDENT(simplify, "8.4", "26/11/21")
