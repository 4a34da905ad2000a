// read1blk.cc: the first block of a file.
#include "getdylin.h"

#include "chkalloc.h"
#include "ident.h"
#include "private_io.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace {

// For callers that pass no record: filled by each of their calls, and the
// cache of the next.
constinit blk1 shared_block{};

constexpr size_t block_size = sizeof shared_block.data - 1;

void forget_name(blk1 *block) {
    free(block->name);
    block->name = nullptr;
}

// Bytes read, or -1 with errno.
ssize_t read_start(const char *path, char *data) {
    int descriptor = tovan::open_file(path, O_RDONLY);
    if (descriptor == -1) return -1;
    ssize_t got = tovan::read_full(descriptor, data, block_size);
    int number = errno;
    close(descriptor);
    errno = number;
    return got;
}

}  // namespace

blk1 *read1blk(const char *path, blk1 *block) {
    if (block == nullptr) block = &shared_block;
    if (block->name != nullptr && strcmp(block->name, path) == 0) return block;
    forget_name(block);
    ssize_t got = read_start(path, block->data);
    if (got == -1) return nullptr;
    block->end = block->data + got;
    *block->end = '\0';
    block->name = savestr(path);
    return block;
}

TOVAN_IDENT(read1blk, "8.4", "26/11/21")
