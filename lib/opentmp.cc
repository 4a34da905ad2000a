// opentmp.cc: temporary files after a model.
#include "opentmp.h"

#include "chkalloc.h"
#include "errexit.h"
#include "ident.h"
#include "private_io.h"
#include "private_opentmp.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace {

constexpr char digits[] = "abcdefghijklmnopqrstuvwxyz0123456789";
constexpr unsigned digit_count = sizeof digits - 1;

// Ids up to this one have the first 26 bases of their process.
constexpr unsigned last_short_process = 99999;

// Where the bases of this process have got to. Used by next_base(); holds for
// the process, forked children go on with their parent's.
struct base_state {
    unsigned process;  // 0: not asked yet
    char letter;       // of the next base that is told by the process
    bool is_seeded;
};
constinit base_state state{0, 'a', false};

// The directory of mktmplate(). Filled by its first call; never released.
constinit const char *template_directory = nullptr;

void put_process_base(char *base) {
    tovan::put_five_digits(base, state.process);
    base[tovan::base_length - 1] = state.letter++;
}

void put_generated_base(char *base) {
    if (!state.is_seeded) srand(state.process);
    state.is_seeded = true;
    auto number = static_cast<unsigned>(rand());
    if (number == state.process)
        errexit("opentmp: random number generator has cycled");
    for (size_t i = 0; i < tovan::base_length; i++) {
        base[i] = digits[number % digit_count];
        number /= digit_count;
    }
}

void next_base(char *base) {
    if (state.process == 0) state.process = static_cast<unsigned>(getpid());
    if (state.process <= last_short_process && state.letter <= 'z')
        put_process_base(base);
    else
        put_generated_base(base);
}

const char *directory_in_force() {
    const char *directory = getenv("TMPDIR");
    return directory != nullptr ? directory : "/tmp";
}

}  // namespace

char *tovan::model_path(const char *directory, const char *model, char **base) {
    if (directory == nullptr) directory = directory_in_force();
    size_t room = strlen(directory) + 1 + strlen(model) + base_length + 1;
    auto *path = static_cast<char *>(chkalloc(room));
    size_t prefix = strcspn(model, ".");
    char *end = stpcpy(path, directory);
    *end++ = '/';
    memcpy(end, model, prefix);
    *base = end + prefix;
    strcpy(*base + base_length, model + prefix);
    return path;
}

char *mktmplate(const char *file) {
    if (template_directory == nullptr)
        template_directory = savestr(directory_in_force());
    size_t room = strlen(template_directory) + 1 + strlen(file) + 1;
    auto *path = static_cast<char *>(chkalloc(room));
    char *end = stpcpy(path, template_directory);
    *end++ = '/';
    strcpy(end, file);
    return path;
}

char *opentmp(const char *directory, const char *model, int mode,
              int *descriptor) {
    char *base;
    char *path = tovan::model_path(directory, model, &base);
    int opened;
    do {
        next_base(base);
        opened = tovan::open_for_caller(path, O_RDWR | O_CREAT | O_EXCL, mode);
    } while (opened == -1 && errno == EEXIST);
    if (opened == -1) errexit("opentmp: %s: %s", path, syserr());
    if (descriptor != nullptr)
        *descriptor = opened;
    else
        close(opened);
    return path;
}

TOVAN_IDENT(opentmp, "8.4", "26/11/22")
