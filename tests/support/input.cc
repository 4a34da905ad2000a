// input.cc: streams and descriptors that deliver given bytes.
#include "support/input.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support {

input_stream::input_stream(const std::string &bytes) : stream_(tmpfile()) {
    fwrite(bytes.data(), 1, bytes.size(), stream_);
    rewind(stream_);
}

input_stream::~input_stream() {
    fclose(stream_);
}

input_descriptor::input_descriptor(const std::string &bytes) {
    char name[] = "input-XXXXXX";
    descriptor_ = mkstemp(name);
    unlink(name);
    ssize_t put = write(descriptor_, bytes.data(), bytes.size());
    EXPECT_EQ(put, static_cast<ssize_t>(bytes.size()));
    lseek(descriptor_, 0, SEEK_SET);
}

// Each piece waits until the one before it was read.
input_descriptor::input_descriptor(const std::vector<std::string> &pieces) {
    int ends[2];
    if (pipe(ends) != 0) abort();
    descriptor_ = ends[0];
    writer_ = fork();
    if (writer_ == 0) {
        // A reader that ends in a fatal message never says so.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        for (const std::string &piece : pieces) {
            if (write(ends[1], piece.data(), piece.size()) == -1) break;
            int unread;
            while (ioctl(ends[0], FIONREAD, &unread) == 0 && unread > 0)
                sched_yield();
        }
        _exit(0);
    }
    close(ends[1]);
}

input_descriptor::~input_descriptor() {
    close(descriptor_);
    if (writer_ <= 0) return;
    kill(writer_, SIGKILL);
    waitpid(writer_, nullptr, 0);
}

std::vector<std::string> in_pieces(const std::string &bytes, size_t n) {
    std::vector<std::string> pieces;
    for (size_t at = 0; at < bytes.size(); at += n)
        pieces.push_back(bytes.substr(at, n));
    return pieces;
}

}  // namespace support
