// program.cc: programs that a test provides.
#include "support/program.h"

#include "support/tree.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <filesystem>

namespace support {

void install_program(const std::string &name, const std::string &script) {
    write_file("bin/" + name, "#!/bin/sh\n" + script);
    chmod(("bin/" + name).c_str(), 0755);
    std::string here = std::filesystem::current_path();
    setenv("PATH", (here + "/bin:/usr/bin:/bin").c_str(), 1);
}

}  // namespace support
