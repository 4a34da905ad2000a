// rxprewrt_fuzz.cc: any template after a match and after none.
//   input   template, null, subject
#include "fuzz.h"

#include <stdlib.h>
#include <string.h>
#include <tovan/rxpcomp.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string input(reinterpret_cast<const char *>(data), size);
    std::string replacement(input.c_str());
    std::string subject(replacement.size() < size
                            ? input.c_str() + replacement.size() + 1
                            : "");
    if (rxpcomp("<\\([a-m]*\\)|\\([n-z]\\)>*\\(\\~\\)", 0, 0) < 0) abort();
    rxpeval(subject.c_str());
    char *text = rxprewrite(replacement.c_str());
    // Each digit inserts the subject at most.
    if (strlen(text) > replacement.size() * (subject.size() + 1)) abort();
    free(text);
    return 0;
}
