// archive_faults.h: the same faults for each archive writer.
#ifndef TOVAN_TESTS_ARCHIVE_FAULTS_H
#define TOVAN_TESTS_ARCHIVE_FAULTS_H

#include "support/archive_model.h"
#include "support/faults/faults.h"
#include "support/tree.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <string>
#include <vector>

namespace support {

// A writer, and the model of what it writes.
struct archive_writer {
    void (*start)();
    void (*put)(const char *path, const char *name, const struct stat *status);
    void (*finish)();
    std::string (*entry)(const std::string &name, const struct stat &status,
                         const std::string &content);
    std::string (*archive)(const std::string &entries);
    std::string (*difference)(const std::string &expected,
                              const std::string &actual);
    size_t record;
};

struct archived_file {
    std::string name;
    std::string content;
};

constexpr size_t large = 200000;  // read in several pieces
inline const std::vector<archived_file> archived_files = {
    {"a", random_bytes(3000)},
    {"b", random_bytes(large)},
    {"c", random_bytes(700)}};

// What happens to three files, of which "b" is read in several pieces.
class archive_faults {
  public:
    explicit archive_faults(const archive_writer &writer) : writer_(writer) {
        write_files();
    }

    static void write_files() {
        timespec times[2] = {{1000000000, 0}, {1000000000, 0}};
        for (const archived_file &each : archived_files) {
            write_file(each.name, each.content);
            utimensat(AT_FDCWD, each.name.c_str(), times, 0);
        }
    }

    // Archives the files. Standard error ends with the errno of each and of
    // the end.
    void archive_files() const {
        writer_.start();
        std::string reasons;
        for (const archived_file &each : archived_files) {
            writer_.put(each.name.c_str(), each.name.c_str(), nullptr);
            reasons += std::to_string(errno) + " ";
        }
        writer_.finish();
        fprintf(stderr, "%s%d\n", reasons.c_str(), errno);
    }

    std::string entry(const std::string &name,
                      const std::string &content) const {
        return writer_.entry(name, status_of(name), content);
    }

    // The archive of the files, without one of them.
    std::string archive_without(const std::string &left_out) const {
        std::string entries;
        for (const archived_file &each : archived_files) {
            if (each.name != left_out)
                entries += entry(each.name, each.content);
        }
        return writer_.archive(entries);
    }

    std::string whole_archive() const {
        return archive_without("");
    }

    // The archive when "b" has only so many bytes left of its content.
    std::string archive_with_b(size_t bytes) const {
        std::string content = archived_files[1].content.substr(0, bytes);
        content.resize(large);
        return writer_.archive(entry("a", archived_files[0].content) +
                               entry("b", content) +
                               entry("c", archived_files[2].content));
    }

    void expect_end(const outcome &end, const std::string &archive,
                    const std::string &err, const fault &what) const {
        std::string name = name_of(what);
        EXPECT_EQ(writer_.difference(archive, end.out), "") << name;
        EXPECT_EQ(end.err, err) << name;
        EXPECT_EQ(end.exit_status, 0) << name;
    }

    void expect(const fault &what, const std::string &archive,
                const std::string &err) const {
        expect_end(end_with(what), archive, err, what);
    }

    // Interruptions, short counts, and failures that do not matter.
    void expect_whole() const {
        std::string whole = whole_archive();
        for (const fault &what :
             {fault{"write", EINTR, 1, 5}, fault{"write", 0, 1, always, 1},
              fault{"write", 0, 1, always, half}, fault{"read", EINTR, 1, 5},
              fault{"read", 0, 1, always, 1}, fault{"read", 0, 1, always, half},
              fault{"open", EINTR, 1, 5}, fault{"close", EIO, 1, 3},
              fault{"close", EINTR, 1, 3}}) {
            expect(what, whole, "0 0 0 0\n");
        }
    }

    // Each write fails once, in each way: what was written stays, the message
    // comes once, and the end knows the reason.
    void expect_write_failures(std::string (*message)(int error)) const {
        std::string whole = whole_archive();
        int count = calls("write");
        EXPECT_EQ(static_cast<size_t>(count) * writer_.record, whole.size());
        for (int error : {EIO, ENOSPC, EDQUOT, EFBIG, EAGAIN, EPIPE}) {
            for (int nth = 1; nth <= count; nth++) {
                outcome end = end_with({"write", error, nth});
                expect_written(end, static_cast<size_t>(nth - 1));
                EXPECT_EQ(end.err.rfind(message(error), 0), 0u) << end.err;
                std::string last = " " + std::to_string(error) + "\n";
                EXPECT_EQ(end.err.substr(end.err.size() - last.size()), last);
                EXPECT_EQ(std::count(end.err.begin(), end.err.end(), '\n'), 2);
                EXPECT_EQ(end.exit_status, 0);
            }
        }
        outcome end = end_with({"write", 0, 3, always, 0});
        expect_written(end, 2);
        EXPECT_EQ(end.err.rfind(message(ENOSPC), 0), 0u) << end.err;
    }

    // Each read of "b" fails once, or is the end of the file.
    void expect_read_failures(std::string (*message)(int error)) const {
        int count = calls("read");
        EXPECT_GE(count, 5);
        for (int nth = 2; nth < count; nth++) {
            for (int error : {EIO, EISDIR, EAGAIN}) {
                outcome end = end_with({"read", error, nth});
                EXPECT_EQ(end.err, message(error) + "0 " +
                                       std::to_string(error) + " 0 0\n");
                expect_zeros(end);
            }
            outcome end = end_with({"read", 0, nth, 1, 0});
            EXPECT_EQ(end.err,
                      message(0) + "0 " + std::to_string(EIO) + " 0 0\n");
            expect_zeros(end);
        }
    }

    // The nth call fails for each of the files, which is left out.
    void expect_left_out(const char *call, int (*nth_call)(int file),
                         std::string (*message)(const std::string &name,
                                                int error)) const {
        for (int error : {EACCES, EMFILE, ENFILE, ENOENT, ELOOP, ENOMEM, EIO,
                          ENAMETOOLONG, ENOTDIR}) {
            for (int nth = 0; nth < 3; nth++) {
                std::string name =
                    archived_files[static_cast<size_t>(nth)].name;
                std::string err = message(name, error);
                for (int i = 0; i < 3; i++)
                    err += (i == nth ? std::to_string(error) : "0") + " ";
                expect({call, error, nth_call(nth)}, archive_without(name),
                       err + "0\n");
            }
        }
    }

    // "b" changes after it was looked at, when it is about to be read.
    void expect_changes(const std::string &shrank) const {
        std::string err = shrank + "0 " + std::to_string(EIO) + " 0 0\n";
        std::string empty = archive_with_b(0);
        std::string some = archive_with_b(100000);
        std::string whole = whole_archive();
        expect_change([] { resize_b(0); }, empty, err);
        expect_change([] { resize_b(100000); }, some, err);
        expect_change([] { resize_b(3 * large); }, whole, "0 0 0 0\n");
        expect_change([] { unlink("b"); }, whole, "0 0 0 0\n");
    }

  private:
    outcome end_with(const fault &what) const {
        return with_fault(what, [this] { archive_files(); });
    }

    // How often the archive takes a call.
    int calls(const char *call) const {
        outcome end = in_child([&] {
            heal();
            archive_files();
            fprintf(stderr, "%d", calls_of(call));
        });
        return std::stoi(end.err.substr(end.err.find('\n') + 1));
    }

    // Of the archive so many records were written.
    void expect_written(const outcome &end, size_t records) const {
        std::string written =
            whole_archive().substr(0, records * writer_.record);
        EXPECT_EQ(writer_.difference(written, end.out), "") << records;
    }

    // The content of "b" is zeros from some byte on.
    void expect_zeros(const outcome &end) const {
        const std::string &content = archived_files[1].content;
        size_t start = archive_with_b(large).find(content.substr(0, 100));
        size_t good = 0;
        while (good < large && end.out[start + good] == content[good])
            good++;
        EXPECT_LT(good, large);
        EXPECT_EQ(writer_.difference(archive_with_b(good), end.out), "");
    }

    static void resize_b(size_t size) {
        if (truncate("b", static_cast<off_t>(size)) != 0) _exit(9);
    }

    void expect_change(void (*change)(), const std::string &archive,
                       const std::string &err) const {
        write_files();
        expect({"read", 0, 2, 1, -1, change}, archive, err);
    }

    archive_writer writer_;
};

}  // namespace support

#endif
