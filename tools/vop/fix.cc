// fix.cc: files through the dictionary.
#include "vop/vop.h"

#include "shared/new_file.h"
#include "shared/options.h"
#include "shared/trace.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <tovan/dystr.h>
#include <tovan/errexit.h>
#include <tovan/sfdict.h>
#include <tovan/sfixfile.h>
#include <tovan/usage.h>
#include <unistd.h>

namespace {

TOOL_TRACE(fix, "each dictionary and each file, and what came of it")

constexpr const char *explanation[] = {
    "Writes files with their references to the dictionary replaced.",
    "Their control lines are obeyed. A structural error ends the program, a",
    "wrong reference is reported and gives status 1; so does a wrong line of",
    "a dictionary, and no file is written then.",
    "",
    "-d DICT\t\tread the dictionary DICT (- for standard input)",
    "-D NAME=text\tset one name; -d and -D count in their order",
    "-u\t\tlist the names in use and their places, and do nothing else",
    "-n\t\twrite nothing; report all errors",
    "-t\t\tconvert tilde sequences",
    "-o OUT\t\twrite to OUT instead of standard output",
    "",
    "Example: vop fix -D CC=gcc -o Makefile Makefile.in",
    nullptr,
};

constexpr int set_operation = 0;
constexpr unsigned char trace_names = 1;  // bits of sf_uflag
constexpr unsigned char write_nothing = 2;
constexpr mode_t permission_bits = 07777;
constexpr mode_t new_file_mode = 0666;

// Where the lines go; set before the first file.
constinit FILE *output = nullptr;

void write_line(const char *text, int length) {
    fwrite_unlocked(text, 1, static_cast<size_t>(length), output);
}

constexpr char digits[] = "0123456789";
constexpr char name_characters[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_0123456789";

// Sets a name as "NAME=text" says.
void define(const char *definition) {
    const char *equals = definition + strspn(definition, name_characters);
    if (equals == definition || strspn(definition, digits) > 0)
        usage("-D %s: no name", definition);
    if (*equals != '=') usage("-D %s: no `=' behind the name", definition);
    dy name{};
    dyspan(&name, definition, equals);
    sf_dictext(name.buffer, equals + 1, "-D", 0, set_operation);
    free(name.buffer);
}

int read_dictionary(const char *path) {
    int status = sfdict(path);
    if (ddt_trace(&trace_fix, 1, 1))
        eprintf("%s: dictionary, status %d\n", path, status);
    return status;
}

int fix_file(const char *path) {
    int status = sfixfile(path, 0);
    if (ddt_trace(&trace_fix, 1, 1))
        eprintf("%s: %d lines, status %d\n", path, sfixfile_lc, status);
    return status;
}

int fix_files(char **files) {
    int status = 0;
    setsfwrite(write_line);
    for (; *files != nullptr; files++)
        status |= fix_file(*files);
    return status;
}

// The permissions of the file that is replaced, or those of a new one.
mode_t permissions_for(const char *file) {
    struct stat status;
    if (stat(file, &status) == 0) return status.st_mode & permission_bits;
    mode_t mask = umask(0);
    umask(mask);
    return new_file_mode & ~mask;
}

// Fixes into a file beside OUT, which moves there when nothing was wrong.
int replace_output(const char *out, char **files) {
    mode_t permissions = permissions_for(out);
    int descriptor = tools::begin_file(out);
    int copy = errcheck(dup(descriptor), out);
    output = static_cast<FILE *>(ferrcheck(fdopen(copy, "w"), out));
    int status = fix_files(files);
    // The errno of a write that failed long ago is not known any more.
    errno = EIO;
    bool has_failed = ferror(output) != 0;
    if (fclose(output) != 0 || has_failed) errexit("%s: %s", out, syserr());
    if (status == 0) tools::finish_file(out, descriptor, permissions);
    return status;
}

int run(char **arguments) {
    const char *out = nullptr;
    unsigned char wanted = 0;
    int status = 0;
    tools::options flags = tools::options_of(arguments);
    while (int flag = tools::next_flag(&flags, "d:D:unto:", nullptr)) {
        if (flag == 'd') status |= read_dictionary(flags.value);
        if (flag == 'D') define(flags.value);
        if (flag == 'u') wanted |= trace_names;
        if (flag == 'n') wanted |= write_nothing;
        if (flag == 't') settildecnv();
        if (flag == 'o') out = flags.value;
    }
    if (*flags.next == nullptr) usage("arguments are missing");
    if (out != nullptr && wanted != 0) usage("-o does not go with -u or -n");
    sf_uflag = wanted;
    output = stdout;
    if (status != 0) return status;
    return out != nullptr ? replace_output(out, flags.next)
                          : fix_files(flags.next);
}

}  // namespace

constinit const vop::command vop::fix = {
    "fix", "fix [-d DICT] [-D NAME=text] [-unt] [-o OUT] FILE...", explanation,
    ::run};
