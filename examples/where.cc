// where.cc: where sources lie, and what those places are called on this host.
#include <tovan/tovan.h>
#include <cstdlib>
#include <iostream>
#include <string>

namespace {

std::string name_here(const char *path) {
    dy mapped{};
    dynew(&mapped, 0);
    map_root(path, &mapped);
    std::string name = mapped.buffer;
    free(mapped.buffer);
    return name;
}

}  // namespace

int main(int argc, char **argv) {
    progname = leafnm(argv[0]);
    usestrs("SOURCE...", nullptr);
    if (argc < 2) usage(nullptr);
    lvget(0, nullptr, 0, nullptr, nullptr);
    for (char **source = argv + 1; *source != nullptr; ++source) {
        std::string path = lvfndsrc(*source, "nowhere");
        std::cout << *source << ": " << path;
        std::string here = name_here(path.c_str());
        if (here != path) std::cout << ", here " << here;
        std::cout << '\n';
    }
}
