// sfixfile_fuzz.cc: any file can be fixed. The first byte chooses the flags;
// errors of the structure never end the process.
#include "dictionary.h"
#include "fuzz.h"
#include "memory_file.h"
#include "patterns.h"

#include <tovan/sfixfile.h>

namespace {

int lines_written;

// Reads every byte, so that a sanitizer sees a wrong length.
void check_line(const char *text, int length) {
    unsigned sum = 0;
    for (int i = 0; i < length; ++i)
        sum += static_cast<unsigned char>(text[i]);
    if (length < 1 || (sum == 0 && text[0] != '\0')) abort();
    ++lines_written;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0) return 0;
    fuzz::report_less();
    setsfwrite(check_line);
    if ((data[0] & 8) != 0) settildecnv();
    sf_uflag = (data[0] & 3) | 4;
    sf_splitchar = '\\';
    sf_dictext("A", "value of A", "fuzz", 1, 0);
    sf_dictext("T", "\t@@} x~u:\n", "fuzz", 1, 0);
    const char *path = fuzz::memory_file(data + 1, size - 1);
    lines_written = 0;
    int status = 0;
    bool returned =
        fuzz::survives([&] { status = sfixfile(path, data[0] >> 7); });
    if (!returned || status < 0 || status > 3 || lines_written > sfixfile_lc)
        abort();
    return 0;
}
