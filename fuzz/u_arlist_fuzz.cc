// u_arlist_fuzz.cc: any bytes as an archive: what is listed, and the data of
// its members, must be what a plain reading of the bytes gives.
//
// The first byte of the input says what the others are: 'f' the file itself;
// anything else a short form: for each member a byte with the length of its
// name, the name, a byte of flags (1: the size field is given, 2: so is the
// time field, both with their lengths before them; 4: the mark is broken), a
// byte with the length of the data, and the data.
#include "fuzz.h"
#include "memory_file.h"

#include <stdlib.h>
#include <string.h>
#include <tovan/convert.h>
#include <tovan/strutil.h>
#include <tovan/u_arlist.h>
#include <unistd.h>
#include <string>
#include <vector>

#include "support/ar_image.h"

namespace {

// Takes pieces off the front of the input.
struct pieces {
    const uint8_t *next;
    size_t left;

    uint8_t byte() {
        if (left == 0) return 0;
        --left;
        return *next++;
    }
    std::string text(size_t most) {
        size_t length = byte() % (most + 1);
        if (length > left) length = left;
        std::string taken(reinterpret_cast<const char *>(next), length);
        next += length;
        left -= length;
        return taken;
    }
};

std::string whole_file(const uint8_t *data, size_t size) {
    if (size > 0 && data[0] == 'f')
        return std::string(reinterpret_cast<const char *>(data) + 1, size - 1);
    pieces input{data, size};
    input.byte();
    std::string file = support::ar_magic;
    while (input.left > 0) {
        support::ar_header header{input.text(16), ""};
        uint8_t flags = input.byte();
        if (flags & 1) header.size = input.text(10);
        if (flags & 2) header.mtime = input.text(12);
        if (flags & 4) header.mark = "`";
        std::string content = input.text(255);
        if (!(flags & 1)) header.size = std::to_string(content.size());
        file += header.bytes() + content;
        if (content.size() % 2 != 0) file += '\n';
    }
    return file;
}

struct plain_member {
    std::string name;
    int32_t mtime;
    size_t offset;
    size_t size;
};

// A plain reading of an archive.
struct plain_reading {
    bool is_sound = true;
    std::vector<plain_member> members;

    explicit plain_reading(const std::string &file) {
        if (file.compare(0, 8, support::ar_magic) != 0) is_sound = false;
        std::string table;
        bool has_table = false;
        size_t at = 8;
        while (is_sound && at + 60 <= file.size()) {
            std::string header = file.substr(at, 60);
            std::string digits = without_blanks(header.substr(48, 10));
            if (header.substr(58) != "`\n" || digits.empty() ||
                digits.find_first_not_of("0123456789") != std::string::npos ||
                stoull_of(digits) > file.size() - at - 60) {
                is_sound = false;
                return;
            }
            size_t size = stoull_of(digits);
            std::string name = header.substr(0, 16);
            name.erase(name.find_last_not_of(' ') + 1);
            if (!name.empty() && name.back() == '/') name.pop_back();
            name = name.c_str();
            if (name == "/") {
                table = file.substr(at + 60, size);
                has_table = true;
            } else if (!name.empty() && name != "__________EBEB_") {
                members.push_back(
                    {name, atoin(header.data() + 16, 12), at + 60, size});
            }
            at += 60 + size + size % 2;
        }
        if (!has_table) return;
        for (plain_member &member : members)
            member.name = long_name(member.name, table);
    }

  private:
    static std::string without_blanks(std::string text) {
        text.erase(text.find_last_not_of(' ') + 1);
        text.erase(0, text.find_first_not_of(' '));
        return text;
    }
    static unsigned long long stoull_of(const std::string &digits) {
        return strtoull(digits.c_str(), nullptr, 10);
    }
    static std::string long_name(const std::string &name,
                                 const std::string &table) {
        size_t digit = name.find_first_not_of(" \t+-", 1);
        if (name[0] != '/' || digit == std::string::npos ||
            !strchr("0123456789", name[digit]))
            return name;
        long offset = atoln(name.data() + 1, static_cast<int>(name.size()) - 1);
        if (offset < 0 || static_cast<size_t>(offset) >= table.size())
            return "";
        std::string rest = table.substr(static_cast<size_t>(offset));
        return rest.substr(0, rest.find('/')).c_str();
    }
};

void must(bool holds) {
    if (!holds) abort();
}

void check_member(const armember *m, const plain_member &plain,
                  const std::string &file, int descriptor) {
    must(m->name == plain.name && m->mtime == plain.mtime);
    must(static_cast<size_t>(m->offset) == plain.offset);
    must(static_cast<size_t>(m->size) == plain.size);
    must(m->link == nullptr && m->word == 0);
    must(m->hash == strhash(m->name, nullptr, fhash_tab));
    char *data = getarmemb(descriptor, m);
    must(memcmp(data, file.data() + plain.offset, plain.size) == 0);
    free(data);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string file = whole_file(data, size);
    plain_reading plain(file);
    const char *path = fuzz::memory_file(file.data(), file.size());
    int next_free = dup(0);
    close(next_free);
    const armember *list = nullptr;
    int descriptor = -1;
    bool is_sound =
        fuzz::survives([&] { list = getarlist(path, &descriptor); });
    must(is_sound == plain.is_sound);
    if (is_sound) {
        for (const plain_member &member : plain.members) {
            must(list != nullptr);
            check_member(list, member, file, descriptor);
            list = list->next;
        }
        must(list == nullptr);
    }
    close(next_free);  // the archive's, also after a fatal message
    return 0;
}
