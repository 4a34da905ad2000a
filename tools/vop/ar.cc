// ar.cc: members of ar archives.
#include "vop/vop.h"

#include "shared/options.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <tovan/errexit.h>
#include <tovan/u_arlist.h>
#include <tovan/usage.h>
#include <unistd.h>

namespace {

constexpr const char *explanation[] = {
    "Lists the members of ar archives, or writes their data.",
    "",
    "list\twrites the names, in the order of the archive; with several "
    "archives",
    "\teach begins with the archive and a colon",
    "get\twrites the data of the first member of each name to standard output;",
    "\tstatus 1 when there is none",
    "-l\twith list: put size, time (UTC) and the data's position before each",
    "\tname",
    "",
    "Example: vop ar get libx.a README >README",
    nullptr,
};

// 10 digits, a date, a time, 10 digits: the columns of -l.
void print_details(const armember *member) {
    time_t seconds = member->mtime;
    struct tm date;
    gmtime_r(&seconds, &date);
    char text[sizeof "2000-12-31 23:59:59"];
    strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &date);
    printf("%10d  %s  %10d  ", member->size, text, member->offset);
}

int list(char **archives, bool in_detail) {
    if (*archives == nullptr) usage("arguments are missing");
    bool names_archives = archives[1] != nullptr;
    for (; *archives != nullptr; archives++) {
        for (const armember *member = getarlist(*archives, nullptr);
             member != nullptr; member = member->next) {
            if (in_detail) print_details(member);
            if (names_archives) printf("%s:", *archives);
            puts(member->name);
        }
    }
    return 0;
}

const armember *find(const armember *members, const char *name) {
    while (members != nullptr && strcmp(members->name, name) != 0)
        members = members->next;
    return members;
}

void write_data(int descriptor, const armember *member) {
    char *data = getarmemb(descriptor, member);
    size_t size = static_cast<size_t>(member->size);
    if (fwrite(data, 1, size, stdout) != size)
        errexit("standard output: %s", syserr());
    free(data);
}

int get(char **arguments) {
    const char *archive = arguments[0];
    if (archive == nullptr || arguments[1] == nullptr)
        usage("arguments are missing");
    int descriptor;
    const armember *members = getarlist(archive, &descriptor);
    int status = 0;
    for (char **name = arguments + 1; *name != nullptr; name++) {
        const armember *member = find(members, *name);
        if (member != nullptr) {
            write_data(descriptor, member);
        } else {
            tovan_error("%s: %s: %s: no such member", progname, archive, *name);
            status = 1;
        }
    }
    close(descriptor);
    return status;
}

bool take_detail_flag(tools::options *flags) {
    bool in_detail = false;
    while (tools::next_flag(flags, "l", nullptr) != 0)
        in_detail = true;
    return in_detail;
}

// Flags may stand before the word and behind it.
int run(char **arguments) {
    tools::options flags = tools::options_of(arguments);
    bool in_detail = take_detail_flag(&flags);
    const char *word = *flags.next;
    if (word == nullptr) usage("arguments are missing");
    flags = tools::options_of(flags.next + 1);
    in_detail = take_detail_flag(&flags) || in_detail;
    if (strcmp(word, "list") == 0) return list(flags.next, in_detail);
    if (strcmp(word, "get") != 0) usage("%s: neither list nor get", word);
    if (in_detail) usage("-l does not go with get");
    return get(flags.next);
}

}  // namespace

constinit const vop::command vop::ar = {
    "ar", "ar {list [-l] ARCHIVE... | get ARCHIVE MEMBER...}", explanation,
    ::run};
