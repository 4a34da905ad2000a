// ar_listing.h: what getarlist() gives, as a text.
#ifndef TOVAN_TESTS_AR_LISTING_H
#define TOVAN_TESTS_AR_LISTING_H

#include "support/child.h"

#include <stdio.h>
#include <tovan/strutil.h>
#include <tovan/u_arlist.h>
#include <string>

namespace support {

// What is wrong with a list: an empty text when its records are sane.
inline std::string flaw_of(const armember *list) {
    int64_t behind = 8;
    for (const armember *m = list; m != nullptr; m = m->next) {
        std::string where = std::string("member ") + m->name + ": ";
        if (m->link != nullptr || m->word != 0) return where + "spare words";
        if (m->hash != strhash(m->name, nullptr, fhash_tab))
            return where + "hash";
        if (m->offset < behind + 60) return where + "position";
        if (m->size < 0) return where + "size";
        behind = int64_t{m->offset} + m->size;
    }
    return "";
}

// "NAME MTIME OFFSET SIZE", a line a member.
inline std::string lines_of(const armember *list) {
    std::string lines = flaw_of(list);
    for (const armember *m = list; m != nullptr; m = m->next) {
        lines += std::string(m->name) + " " + std::to_string(m->mtime) + " " +
                 std::to_string(m->offset) + " " + std::to_string(m->size) +
                 "\n";
    }
    return lines;
}

// How a process ends that lists an archive and writes lines_of() it.
inline outcome listing_of(const std::string &path) {
    return in_child([&] {
        std::string lines = lines_of(getarlist(path.c_str(), nullptr));
        fwrite(lines.data(), 1, lines.size(), stdout);
    });
}

}  // namespace support

#endif
