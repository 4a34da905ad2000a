// pack.h: files into an archive of any format.
#ifndef TOVAN_TOOLS_PACK_H
#define TOVAN_TOOLS_PACK_H

#include <sys/stat.h>

namespace vop {

// The flags of the subcommands, and lines that explain them.
#define VOP_PACK_SYNOPSIS \
    " [-nv0] [-C DIR] [--owner USER[:GROUP]] [--now] [PATH...]"
#define VOP_PACK_FLAGS                                                       \
    "The archive goes to standard output, everything else to standard",      \
        "error. Directories bring everything below them, in byte order.",    \
        "Without PATH the paths are the lines of standard input; what lies", \
        "below a directory that was the line before is not packed twice.",   \
        "Status 1 when something was left out, 255 when the archive could",  \
        "not be written.", "", "-C DIR\t\tpaths are relative to DIR",        \
        "-n\t\ttake directories without what is below them",                 \
        "-v\t\twrite the names to standard error",                           \
        "-0\t\tpaths on standard input end with NULs instead of newlines",   \
        "--owner USER[:GROUP]",                                              \
        "\t\trecord these, names or numbers, as owner and group",            \
        "--now\t\trecord the current time as the time of every change"

// What every entry of the archive gets.
struct pack_wishes {
    int uid;  // -1: the file's own
    int gid;
    bool is_now;
};

// An archive writer. After put() and finish() errno is 0, or the reason why
// the entry or the archive is not whole, which has been reported.
struct archive_format {
    void (*start)(const pack_wishes *wishes);
    void (*put)(const char *path, const struct stat *status);
    void (*finish)();
};

// A subcommand that packs.
//   result    its status
int pack(char **arguments, const archive_format *format);

}  // namespace vop

#endif
