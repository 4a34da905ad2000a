// config_fault_test.cc: variables, traits, tables and users when calls of the
// system fail, are interrupted, or transfer less than was asked for.
#include "support/child.h"
#include "support/faults/faults.h"
#include "support/heap_image.h"
#include "support/program.h"
#include "support/tree.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/tovan.h>
#include <unistd.h>
#include <functional>
#include <string>
#include <vector>

namespace {

using support::always;
using support::half;
using support::no_fault;
using support::text_of;

// Variables for some reads of all sizes; OUT goes to the environment.
std::string heap_bytes() {
    std::vector<support::variable> variables = {{"OUT", "value", 2}};
    for (int i = 0; i < 100; i++)
        variables.push_back({"N" + std::to_string(i), std::string(50, 'v')});
    return support::heap_of(variables);
}

constexpr int open_errors[] = {EMFILE, ENFILE,       EACCES, ENOENT, EIO,
                               ELOOP,  ENAMETOOLONG, ENOMEM, ENOTDIR};

// ---- the heap of variables -----------------------------------------------

void load_file() {
    lvget(0, nullptr, 1, "heap", nullptr);
    printf("%s %s", lvvar("N99"), getenv("OUT"));
}

const std::string loaded = std::string(50, 'v') + " value";

TEST(config_fault, variables_from_a_file) {
    support::write_file("heap", heap_bytes());
    const std::string no_header = "test: heap: could not read header\n";
    const std::string no_heap = "test: heap: could not read kivs heap\n";
    support::check_faults(
        load_file,
        {{{"open", EINTR, 1, 3}, loaded, "", 0},
         {{"close", EIO}, loaded, "", 0},
         {{"read", EINTR, 1, 3}, loaded, "", 0},
         {{"read", EINTR, 2}, loaded, "", 0},
         {{"read", 0, 1, always, 1}, loaded, "", 0},
         {{"read", 0, 1, always, half}, loaded, "", 0},
         {{"read", EIO}, "", no_header, 255},
         {{"read", EISDIR}, "", no_header, 255},
         {{"read", EIO, 2}, "", no_heap, 255},
         {{"read", 0, 1, always, 0}, "", no_header, 255},
         {{"read", 0, 2, always, 0}, "", no_heap, 255},
         {{"setenv", ENOMEM}, "", "test: export of kivs OUT failed\n", 255}});
    for (int error : open_errors) {
        support::check_faults(load_file,
                              {{{"open", error},
                                "",
                                "test: heap: " + text_of(error) + "\n",
                                255}});
    }
}

void load_pipe() {
    lvget(0, nullptr, 1, nullptr, nullptr);
    printf("%s %s", lvvar("N99"), getenv("OUT"));
}

TEST(config_fault, variables_from_a_running_kivs) {
    support::write_file("heap", heap_bytes());
    support::install_program("kivs", "cat heap\n");
    const std::string aborted = "test: kivs -p aborted\n";
    auto fatal = [](const char *what, int error) {
        return "test: " + std::string(what) + ": " + text_of(error) + "\n";
    };
    support::check_faults(
        load_pipe,
        {{{"read", EINTR, 1, 3}, loaded, "", 0},
         {{"read", 0, 1, always, 1}, loaded, "", 0},
         {{"waitpid", EINTR, 1, 3}, loaded, "", 0},
         {{"waitpid", ECHILD}, "", aborted, 255},
         {{"open", EINTR, 1, 3}, loaded, "", 0},  // /dev/null in the child
         {{"pipe2", EMFILE}, "", fatal("pipes(2)", EMFILE), 255},
         {{"pipe2", ENFILE}, "", fatal("pipes(2)", ENFILE), 255},
         {{"fork", EAGAIN}, "", fatal("fork(2) (for kivs)", EAGAIN), 255},
         {{"fork", ENOMEM}, "", fatal("fork(2) (for kivs)", ENOMEM), 255},
         {{"read", EIO}, "", "test: <kivs -p: could not read header\n", 255},
         {{"read", EIO, 2},
          "",
          "test: <kivs -p: could not read kivs heap\n",
          255}});
    // The child says what is wrong with it, and then there is no header.
    const std::string none = "test: <kivs -p: could not read header\n";
    support::check_faults(
        load_pipe,
        {{{"open", EMFILE}, "", fatal("/dev/null", EMFILE) + none, 255},
         {{"execv", EACCES, 1, always},
          "",
          "test: kivs: file not executable\n" + none,
          255},
         {{"execv", ENOENT, 1, always},
          "",
          "test: kivs: not found\n" + none,
          255},
         {{"execv", EIO, 1, always}, "", "test: kivs: not found\n" + none, 255},
         {{"execv", ENOMEM, 1, always},
          "",
          "test: kivs: too large\n" + none,
          255},
         {{"execv", E2BIG, 1, always},
          "",
          "test: kivs: arg list too long\n" + none,
          255},
         {{"fcntl", EMFILE, 1, always},
          "",
          fatal("forkcmmd() dup2(2)", EMFILE) + none,
          255}});
}

// ---- traits --------------------------------------------------------------

void tell_trait() {
    const char *value = trait_str("T", "default", 0);
    printf("%s", value);
}

TEST(config_fault, traits) {
    support::write_file("traits", support::heap_of({{"T", "value"}}));
    setenv("TRAITS_FILE", "traits", 1);
    support::check_faults(
        tell_trait,
        {{{"open", EINTR, 1, 3}, "value", "", 0},
         {{"read", EINTR, 1, 3}, "value", "", 0},
         {{"read", 0, 1, always, 1}, "value", "", 0},
         {{"close", EIO}, "value", "", 0},
         {{"open", EMFILE}, "", "test: traits: " + text_of(EMFILE) + "\n", 255},
         {{"read", EIO}, "", "test: traits: could not read header\n", 255},
         {{"read", EIO, 2},
          "",
          "test: traits: could not read kivs heap\n",
          255},
         {{"access", EACCES},
          "",
          "test: traits ($TRAITS_FILE): cannot open, " + text_of(EACCES) + "\n",
          255}});
}

TEST(config_fault, traits_of_the_host) {
    char host[64] = {};
    gethostname(host, sizeof host - 1);
    std::string file =
        "morva/data/traits/" + std::string(host, strcspn(host, ".")) + ".tab";
    support::write_file(file, support::heap_of({{"T", "value"}}));
    setenv("MORVA", "morva", 1);
    unsetenv("TRAITS_FILE");
    // The first call looks for the folder.
    support::check_faults(
        tell_trait,
        {{no_fault, "value", "", 0},
         {{"access", EIO, 2},
          "default",
          "test: Warning: " + file + " not readable (" + text_of(EIO) + ")\n",
          0},
         {{"access", EACCES, 1, always},
          "",
          "test: <morva-root>/data/traits directory does not exist\n",
          255},
         {{"gethostname", EFAULT}, "", "test: gethostname() failed\n", 255}});
}

// ---- system names and root maps ------------------------------------------

void print_names() {
    setsysnamestab("table");
    char **record = sysnames(0, nullptr);
    for (int i = 0; i < 8; i++)
        printf("%s ", record[i]);
}

TEST(config_fault, system_names) {
    const std::string comments(20000, '#');
    support::write_file("table", comments + "\n* name version base os 1 cpu\n");
    const std::string names = "name version base os 1 cpu os-1-cpu ^ ";
    support::check_faults(
        print_names,
        {{{"open", EINTR, 1, 3}, names, "", 0},
         {{"fread", 0, 1, always, 7}, names, "", 0},
         {{"fread", 0, 1, always, half}, names, "", 0},
         {{"uname", EFAULT},
          "",
          "test: uname() failed, " + text_of(EFAULT) + "\n",
          255},
         {{"fdopen", ENOMEM},
          "",
          "test: table: " + text_of(ENOMEM) + "\n",
          255},
         {{"fread", EIO}, "", "test: table: " + text_of(EIO) + "\n", 255},
         {{"fread", EIO, 3}, "", "test: table: " + text_of(EIO) + "\n", 255}});
    for (int error : open_errors) {
        support::check_faults(print_names,
                              {{{"open", error},
                                "",
                                "test: table: " + text_of(error) + "\n",
                                255}});
    }
}

// A table that breaks off inside of a line: what was read of it is no line.
TEST(config_fault, a_table_that_cannot_be_read_to_its_end_gives_no_names) {
    support::write_file("table", "* name version base os 1 cpu-of-this\n");
    support::check_faults(print_names, {{{"fread", EIO, 31, 1, 1},
                                         "",
                                         "test: table: " + text_of(EIO) + "\n",
                                         255}});
}

void print_mappings() {
    load_mappings("map", 1);
    dy path{};
    dynew(&path, 0);
    map_root("/b/x", &path);
    printf("%s", path.buffer);
    free(path.buffer);
}

TEST(config_fault, root_maps) {
    support::write_file("morva/data/roots.map", "");
    support::write_file("map",
                        "/a /one\n" + std::string(20000, '#') + "\n/b /two\n");
    const std::string cannot = "map: cannot open (";
    support::check_faults(
        print_mappings,
        {{{"open", EINTR, 1, 3}, "/two/x", "", 0},
         {{"fread", 0, 1, always, 5}, "/two/x", "", 0},
         {{"open", EMFILE}, "/b/x", cannot + text_of(EMFILE) + ")\n", 0},
         {{"open", EACCES}, "/b/x", cannot + text_of(EACCES) + ")\n", 0},
         {{"fdopen", ENOMEM}, "/b/x", cannot + text_of(ENOMEM) + ")\n", 0},
         {{"fread", EIO}, "/b/x", "Warning: map:1: " + text_of(EIO) + "\n", 0},
         // A line that breaks off is no mapping.
         {{"fread", EIO, 20015, 1, 1},
          "/b/x",
          "Warning: map:3: " + text_of(EIO) + "\n",
          0}});
}

// ---- users and the host --------------------------------------------------

TEST(config_fault, users_and_the_host) {
    auto home = [] { printf("%s", gethome("root", 1)); };
    auto no_must = [] { printf("%s", gethome("root", 0) ? "found" : "none"); };
    for (int error : {EIO, EMFILE, ENOENT, ENOMEM, ERANGE}) {
        support::check_faults(
            home,
            {{{"getpwnam", error}, "", "test: root: no such user\n", 255}});
        support::check_faults(no_must, {{{"getpwnam", error}, "none", "", 0}});
    }
    support::check_faults([] { printf("%s", get_host()); },
                          {{{"gethostname", ENAMETOOLONG},
                            "",
                            "test: gethostname() failed\n",
                            255}});
}

TEST(config_fault, exported_variables) {
    support::check_faults(
        [] {
            int result = newexport("A", "b");
            printf("%d %s", result, strerror(errno));
        },
        {{{"setenv", ENOMEM}, "-1 " + text_of(ENOMEM), "", 0}});
}

// ---- functions of the expansion language that ask for files --------------

TEST(config_fault, files_that_expansions_ask_for) {
    support::write_file("heap", support::heap_of({{"SrcPath", ". src"}}));
    support::write_file("src/f", "");
    support::make_folders("dir");
    auto expand = [] {
        lvget(0, nullptr, 1, "heap", nullptr);
        dy text{};
        dynew(&text, 0);
        printf("%s", lvexpand("@(exists dir) @(isdir dir) @(findfile f)", &text,
                              "test", 1));
        free(text.buffer);
    };
    support::check_faults(expand,
                          {{no_fault, "1 1 src/f", "", 0},
                           {{"access", EIO, 1, always}, "0 1 f", "", 0},
                           {{"stat", EACCES, 1, always}, "1 0 src/f", "", 0}});
}

}  // namespace
