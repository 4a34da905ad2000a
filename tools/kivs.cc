// kivs.cc: writes the build tree's variables as a heap.
#include "kivs/definitions.h"
#include "kivs/listing.h"
#include "shared/heap_file.h"
#include "shared/manners.h"
#include "shared/options.h"
#include "shared/trace.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <tovan/dystr.h>
#include <tovan/errexit.h>
#include <tovan/findfile.h>
#include <tovan/sysnames.h>
#include <tovan/usage.h>
#include <unistd.h>

namespace {

TOOL_TRACE(search, "which files of definitions there are")

constexpr char synopsis[] =
    "-p | -o FILE [-r] [-cNAME] [-dDIR] [FILE ...]\n"
    "       kivs -l [HEAP]";

constexpr const char *explanation[] = {
    "Makes a heap of variables from texts of definitions. Without FILE these",
    "are data/kivs.vars of the installation (MORVA) and then kivs.vars of the",
    "current directory, as far as they exist.",
    "",
    "-p\t\twrite the heap to standard output",
    "-o FILE\t\twrite the heap to FILE, which changes only at the end",
    "-r\t\tread the installation's definitions only",
    "-cNAME\t\tset the variable Config to NAME",
    "-dDIR\t\ttake the local kivs.vars from DIR",
    "-l\t\tlist HEAP (standard input) as text",
    "-V FLAGS\ttrace on standard error: search, files, define, heap, output",
    "\t\tor all, with levels (heap=2); -V x explains them",
    "-x, --help\tdisplay this explanation",
    "--version\tdisplay the version",
    nullptr,
};

struct request {
    bool to_output;
    const char *output;  // null: none
    bool lists;
    bool is_restricted;
    const char *config;     // null: not given
    const char *directory;  // null: not given
    char **files;           // null-terminated
};

request take_flags(char **arguments) {
    request asked{};
    tools::options flags = tools::options_of(arguments);
    while (int flag = tools::next_flag(&flags, "plrc::d::o:", nullptr)) {
        if (flag == 'p') asked.to_output = true;
        if (flag == 'l') asked.lists = true;
        if (flag == 'r') asked.is_restricted = true;
        if (flag == 'c') asked.config = flags.value;
        if (flag == 'd') asked.directory = flags.value;
        if (flag == 'o') asked.output = flags.value;
    }
    asked.files = flags.next;
    return asked;
}

void check_request(const request *asked) {
    int tasks = asked->to_output + (asked->output != nullptr) + asked->lists;
    if (tasks != 1) usage("one of -p, -o and -l is needed");
    bool chooses_files = asked->is_restricted || asked->directory != nullptr;
    if (asked->lists) {
        if (chooses_files || asked->config != nullptr)
            usage("-l goes with no other flag");
        if (asked->files[0] != nullptr && asked->files[1] != nullptr)
            usage("-l lists one heap");
    } else if (chooses_files && asked->files[0] != nullptr) {
        usage("-r and -d choose files, as file arguments do");
    }
}

void define_defaults(kivs::definitions *all) {
    auto *here =
        static_cast<char *>(ferrcheck(getcwd(nullptr, 0), "current directory"));
    kivs::define(all, "CurDir", here, 0);
    free(here);
    kivs::define(all, "SrcPath", ".", 0);
    char *table = findfile("data/sysnames.tab", "%MORVA", 0);
    if (table == nullptr) return;
    kivs::define(all, "System[Name]", sysnames(0, nullptr)[0], 0);
    free(table);
}

void read_installation(kivs::definitions *all) {
    char *file = findfile("data/kivs.vars", "%MORVA", 0);
    if (ddt_trace(&trace_search, 1, 1))
        eprintf("installation: %s\n", file != nullptr ? file : "none");
    if (file == nullptr) return;
    kivs::read_definitions(all, file);
    free(file);
}

void read_local(kivs::definitions *all, const char *directory) {
    dy file{};
    dyreuse(&file, 64);
    dystr(&file, directory);
    dyaddslash(&file);
    dystr(&file, "kivs.vars");
    bool exists = access(file.buffer, F_OK) == 0;
    if (ddt_trace(&trace_search, 1, 1))
        eprintf("local: %s%s\n", file.buffer, exists ? "" : " (none)");
    if (exists) kivs::read_definitions(all, file.buffer);
    free(file.buffer);
}

void collect(kivs::definitions *all, const request *asked) {
    define_defaults(all);
    if (asked->files[0] == nullptr) {
        read_installation(all);
        if (!asked->is_restricted) read_local(all, asked->directory);
    }
    for (char **file = asked->files; *file != nullptr; ++file)
        kivs::read_definitions(all, *file);
    if (asked->config != nullptr) kivs::define(all, "Config", asked->config, 0);
    kivs::drop_replaced(all);
}

void write_output(const tools::heap_contents *contents) {
    errcheck(tools::write_heap(STDOUT_FILENO, contents), "standard output");
}

// As a file that is created has them: what the umask leaves of 0666.
mode_t usual_permissions() {
    mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

int main(int, char **argv) {
    tools::start(argv[0]);
    usestrs(synopsis, explanation);
    request asked = take_flags(argv + 1);
    check_request(&asked);
    if (asked.lists) {
        kivs::list_heap(asked.files[0] != nullptr ? asked.files[0] : "-");
        tools::finish(0);
    }
    kivs::definitions all{};
    collect(&all, &asked);
    tools::heap_contents contents = kivs::contents_of(&all);
    if (asked.to_output) {
        write_output(&contents);
    } else {
        tools::replace_heap(asked.output, &contents, usual_permissions());
    }
    tools::finish(0);
}
