// main.cc: every test program starts here: an empty directory, a plain
// environment, then the tests.
#include "support/tree.h"

#include <ftw.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <tovan/errexit.h>
#include <unistd.h>

// Exhaustion is the library's to handle, under the sanitizers too.
extern "C" const char *__asan_default_options();
extern "C" const char *__asan_default_options() {
    return "allocator_may_return_null=1";
}

// What dycache() and getarlist() hand out is permanent, whoever forgets it.
extern "C" const char *__lsan_default_suppressions();
extern "C" const char *__lsan_default_suppressions() {
    return "leak:dycache\nleak:getarlist\n";
}

namespace {

int remove_entry(const char *path, const struct stat *, int, struct FTW *) {
    chmod(path, 0700);
    return remove(path);
}

// No test reads this machine's installation: its root does not exist, and
// the traits that the library itself asks for come from the environment.
void plain_environment(const std::string &home) {
    for (const char *name : {"HOME_MORVA", "KIVS_FILE", "TRAITS_FILE",
                             "MAXLEAFLEN", "KRT_debug", "TMPDIR"}) {
        unsetenv(name);
    }
    setenv("LC_ALL", "C", 1);
    setenv("MORVA", (home + "/morva").c_str(), 1);
    setenv("HOME", home.c_str(), 1);
    setenv("PATH", "/usr/bin:/bin", 1);
    setenv("_T_sh", "sh", 1);
    setenv("_T_binsh", "/bin/sh", 1);
    setenv("_T_mkdir", "mkdir", 1);
    setenv("DBLESLASHROOT", "0", 1);
}

}  // namespace

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();
    char directory[] = "/tmp/tovan-test-XXXXXX";
    if (mkdtemp(directory) == nullptr || chdir(directory) != 0) return 2;
    plain_environment(directory);
    progname = "test";
    int result = RUN_ALL_TESTS();
    if (chdir("/") != 0) return 2;
    chmod(directory, 0700);
    nftw(directory, remove_entry, 16, FTW_DEPTH | FTW_PHYS);
    return result;
}
