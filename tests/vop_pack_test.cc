// vop_pack_test.cc: archives on the command line.
#include "support/archive_model.h"
#include "support/child.h"
#include "support/terminal.h"
#include "support/tree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

using support::cpio_archive;
using support::cpio_entry;
using support::status_of;
using support::tar_archive;
using support::tar_file;
using support::tar_header;

namespace {

const std::string program = TOVAN_BINARY_DIR "/bin/vop";

const std::string flags =
    " [-nv0] [-C DIR] [--owner USER[:GROUP]] [--now] [PATH...]\n"
    "Use -x flag for explanations\n";
const std::string tar_usage = "Usage: vop tar" + flags;
const std::string cpio_usage = "Usage: vop cpio" + flags;

support::outcome vop(std::vector<std::string> words,
                     const std::string &input = "") {
    words.insert(words.begin(), program);
    return support::run_program(words, input);
}

// The archive of a command that has nothing to complain about.
std::string archive_of(const std::vector<std::string> &words,
                       const std::string &input = "") {
    support::outcome end = vop(words, input);
    EXPECT_EQ(end.err, "");
    EXPECT_EQ(end.exit_status, 0);
    return end.out;
}

void expect_refusal(const std::vector<std::string> &words,
                    const std::string &err, int status = 255) {
    support::outcome end = vop(words);
    EXPECT_EQ(end.err, err);
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(end.exit_status, status);
}

// A folder "tree" with files, links, and names in no order.
void make_tree() {
    support::write_file("tree/b", "content of b\n");
    support::write_file("tree/a/2", std::string(20000, 'x'));
    support::write_file("tree/a/10", "");
    support::write_file("tree/B", "capital\n");
    support::write_file("tree/.hidden", "h");
    ASSERT_EQ(link("tree/b", "tree/a/same"), 0);
    ASSERT_EQ(symlink("../b", "tree/a/link"), 0);
    support::write_file("tree/a/z", "behind the link\n");
    support::make_folders("tree/empty");
    chmod("tree/B", 0600);
    chmod("tree/empty", 01755);
}

const std::vector<std::string> tree_in_order = {
    "tree",      "tree/.hidden", "tree/B",      "tree/a",
    "tree/a/10", "tree/a/2",     "tree/a/link", "tree/a/same",
    "tree/a/z",  "tree/b",       "tree/empty"};

// What an archive of the tree is, entry by entry.
std::string tar_of(const std::string &path) {
    struct stat status = status_of(path);
    if (S_ISDIR(status.st_mode)) return tar_header(path + "/", status, 0);
    if (S_ISLNK(status.st_mode))
        return tar_header(path, status, 0, '2',
                          std::filesystem::read_symlink(path));
    // The other name comes first.
    if (path == "tree/b")
        return tar_header(path, status, status.st_size, '1', "tree/a/same");
    return tar_file(path, status, support::read_file(path));
}

std::string cpio_of(const std::string &path) {
    struct stat status = status_of(path);
    std::string content;
    if (S_ISREG(status.st_mode)) content = support::read_file(path);
    if (S_ISLNK(status.st_mode)) content = std::filesystem::read_symlink(path);
    return cpio_entry(path, status, content);
}

std::string tar_of_tree() {
    std::string entries;
    for (const std::string &path : tree_in_order)
        entries += tar_of(path);
    return tar_archive(entries);
}

std::string cpio_of_tree() {
    std::string entries;
    for (const std::string &path : tree_in_order)
        entries += cpio_of(path);
    return cpio_archive(entries);
}

void expect_tar(const std::string &expected, const std::string &actual) {
    EXPECT_EQ(support::tar_difference(expected, actual), "");
}

void expect_cpio(const std::string &expected, const std::string &actual) {
    EXPECT_EQ(support::cpio_difference(expected, actual), "");
}

TEST(vop_pack, trees_are_walked_in_byte_order) {
    make_tree();
    expect_tar(tar_of_tree(), archive_of({"tar", "tree"}));
    expect_cpio(cpio_of_tree(), archive_of({"cpio", "tree"}));
    expect_tar(tar_of_tree(), archive_of({"tar", "tree///"}));
}

TEST(vop_pack, paths_come_from_standard_input) {
    make_tree();
    expect_tar(tar_of_tree(), archive_of({"tar"}, "tree\n"));
    expect_cpio(cpio_of_tree(), archive_of({"cpio"}, "tree"));
    expect_tar(tar_archive(tar_of("tree/B") + tar_of("tree/.hidden")),
               archive_of({"tar"}, "tree/B\n\ntree/.hidden\n"));
    expect_cpio(cpio_archive(""), archive_of({"cpio"}, ""));
    std::string names = std::string("tree/B\0tree/a/10\0", 17);
    expect_tar(tar_archive(tar_of("tree/B") + tar_of("tree/a/10")),
               archive_of({"tar", "-0"}, names));
}

TEST(vop_pack, lists_of_find_are_packed_once) {
    make_tree();
    std::string list;
    for (const std::string &path : tree_in_order)
        list += path + "\n";
    expect_tar(tar_of_tree(), archive_of({"tar"}, list));
    expect_cpio(cpio_of_tree(), archive_of({"cpio"}, list));
    expect_cpio(cpio_of_tree(), archive_of({"cpio", "-n"}, list));
    // Only what lies below the directory before it.
    support::write_file("tree2", "x");
    expect_tar(tar_archive(tar_of("tree/empty") + tar_of("tree2")),
               archive_of({"tar"}, "tree/empty\ntree2\n"));
}

TEST(vop_pack, directories_can_go_without_their_content) {
    make_tree();
    expect_tar(tar_archive(tar_of("tree")), archive_of({"tar", "-n", "tree"}));
}

TEST(vop_pack, current_directory_and_absolute_paths) {
    support::write_file("here/file", "x");
    std::string here = std::filesystem::current_path();
    std::string archive = archive_of({"tar", "-C", "here", "."});
    EXPECT_EQ(archive.substr(0, 3), std::string("./\0", 3));
    EXPECT_EQ(archive.substr(512, 7), std::string("./file\0", 7));
    archive = archive_of({"cpio", "-Chere", "./", "./file"});
    EXPECT_EQ(archive.substr(76, 2), std::string(".\0", 2));
    EXPECT_EQ(archive.substr(78 + 76, 5), std::string("file\0", 5));
    EXPECT_EQ(archive.substr(78 + 76 + 6 + 76, 5), std::string("file\0", 5));
    std::string path = here + "/here/file";
    EXPECT_EQ(archive_of({"tar", path}).substr(0, path.size()), path);
    expect_refusal({"tar", "-C", "nowhere", "x"},
                   "vop: nowhere: No such file or directory\n");
}

TEST(vop_pack, names_are_written_on_demand) {
    make_tree();
    std::string list;
    for (const std::string &path : tree_in_order)
        list += path + "\n";
    for (const char *format : {"tar", "cpio"}) {
        support::outcome end = vop({format, "-v", "tree"});
        EXPECT_EQ(end.err, list);
        EXPECT_EQ(end.exit_status, 0);
    }
}

TEST(vop_pack, owner_and_time_can_be_chosen) {
    support::write_file("file", "x");
    struct stat status = status_of("file");
    status.st_uid = 12;
    expect_tar(tar_archive(tar_file("file", status, "x")),
               archive_of({"tar", "--owner", "12", "file"}));
    status.st_gid = 34;
    expect_tar(tar_archive(tar_file("file", status, "x")),
               archive_of({"tar", "--owner=12:34", "file"}));
    expect_cpio(cpio_archive(cpio_entry("file", status, "x")),
                archive_of({"cpio", "--owner=12:34", "file"}));
    status.st_uid = 0;
    status.st_gid = 0;
    expect_cpio(cpio_archive(cpio_entry("file", status, "x")),
                archive_of({"cpio", "--owner", "root:root", "file"}));
    time_t before = time(nullptr);
    std::string tar = archive_of({"tar", "--now", "file"});
    std::string cpio = archive_of({"cpio", "--now", "file"});
    time_t after = time(nullptr);
    for (const std::string &field :
         {tar.substr(136, 11), cpio.substr(48, 11)}) {
        long value = std::stol(field, nullptr, 8);
        EXPECT_GE(value, before);
        EXPECT_LE(value, after);
    }
}

TEST(vop_pack, what_is_missing_is_reported_with_status_1) {
    support::write_file("file", "x");
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    std::string name(100, 'n');
    support::write_file(name, "x");
    support::outcome end = vop({"tar", "none", "pipe", name, "file"});
    EXPECT_EQ(end.err,
              "vop: none: No such file or directory\n"
              "vop: pipe: neither file nor directory nor link, left out\n"
              "vop: " +
                  name + " name too long\n");
    EXPECT_EQ(end.exit_status, 1);
    expect_tar(tar_archive(tar_of("file")), end.out);
    end = vop({"cpio", "none", "pipe", "file"});
    EXPECT_EQ(end.err, "vop: none: No such file or directory\n");
    EXPECT_EQ(end.exit_status, 1);
    expect_cpio(cpio_archive(cpio_of("pipe") + cpio_of("file")), end.out);
}

TEST(vop_pack, links_with_odd_names_and_times_are_reported) {
    std::string name(100, 'n');
    ASSERT_EQ(symlink("x", name.c_str()), 0);
    ASSERT_EQ(symlink("x", "early"), 0);
    timespec times[2] = {{-5, 0}, {-5, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, "early", times, AT_SYMLINK_NOFOLLOW), 0);
    support::outcome end = vop({"tar", name, "early"});
    EXPECT_EQ(end.err, "vop: " + name +
                           " name too long\n"
                           "vop: early modification time does not fit\n");
    EXPECT_EQ(end.exit_status, 1);
    expect_tar(tar_archive(""), end.out);
}

TEST(vop_pack, temporary_file_of_link_targets_goes_away) {
    ASSERT_EQ(symlink(std::string(300, 't').c_str(), "long"), 0);
    ASSERT_EQ(symlink("t", "short"), 0);
    support::make_folders("tmp");
    setenv("TMPDIR", "tmp", 1);
    expect_cpio(cpio_archive(cpio_of("long") + cpio_of("short")),
                archive_of({"cpio", "long", "short"}));
    EXPECT_TRUE(std::filesystem::is_empty("tmp"));
    setenv("TMPDIR", "none", 1);
    EXPECT_EQ(vop({"cpio", "short"}).exit_status, 255);
}

TEST(vop_pack, file_named_as_the_end_does_not_end_the_archive) {
    support::write_file("TRAILER!!!", "x");
    std::string entry =
        cpio_entry("./TRAILER!!!", status_of("TRAILER!!!"), "x");
    expect_cpio(cpio_archive(entry), archive_of({"cpio", "TRAILER!!!"}));
    expect_cpio(cpio_archive(entry), archive_of({"cpio", "./TRAILER!!!"}));
}

TEST(vop_pack, archive_does_not_pack_itself) {
    support::make_folders("d");
    for (const char *format : {"tar", "cpio"}) {
        support::outcome end = support::run_program(
            {"sh", "-c", program + " " + format + " d >d/archive"});
        EXPECT_EQ(end.err, "vop: d/archive: is the archive, left out\n");
        EXPECT_EQ(end.exit_status, 0);
    }
}

TEST(vop_pack, failed_writes_give_status_255) {
    support::write_file("file", std::string(100000, 'x'));
    support::outcome end =
        support::run_program({"sh", "-c", program + " tar file >/dev/full"});
    EXPECT_EQ(end.err, "vop: standard output: No space left on device\n");
    EXPECT_EQ(end.exit_status, 255);
    end = support::run_program(
        {"sh", "-c", program + " cpio file file >/dev/full"});
    EXPECT_EQ(end.err, "Can't write to std out!\n");
    EXPECT_EQ(end.exit_status, 255);
    end = support::run_program({"sh", "-c", program + " tar file >&-"});
    EXPECT_EQ(end.err, "vop: standard output: Bad file descriptor\n");
    EXPECT_EQ(end.exit_status, 255);
}

TEST(vop_pack, closed_pipe_gives_status_255) {
    support::outcome end = support::in_child([] {
        int ends[2];
        if (pipe(ends) != 0) _exit(9);
        close(ends[0]);
        dup2(ends[1], 1);
        execl(program.c_str(), "vop", "tar", "-n", ".", nullptr);
    });
    EXPECT_EQ(end.err, "vop: standard output: Broken pipe\n");
    EXPECT_EQ(end.exit_status, 255);
}

TEST(vop_pack, misuse_is_explained) {
    expect_refusal({"tar", "-q", "x"}, "-q: invalid flag\n" + tar_usage);
    expect_refusal({"cpio", "--none"}, "--none: invalid flag\n" + cpio_usage);
    expect_refusal({"tar", "--now=1", "x"},
                   "--now=1: invalid flag\n" + tar_usage);
    expect_refusal({"tar", "--owner"}, "--owner: value missing\n" + tar_usage);
    expect_refusal({"tar", "-C"}, "-C: value missing\n" + tar_usage);
    expect_refusal({"cpio", "--owner=no-such-user", "x"},
                   "--owner: no user no-such-user\n" + cpio_usage);
    expect_refusal({"cpio", "--owner=1:no-such-group", "x"},
                   "--owner: no group no-such-group\n" + cpio_usage);
    expect_refusal({"tar", "--owner=4294967296", "x"},
                   "--owner: no user 4294967296\n" + tar_usage);
}

TEST(vop_pack, archives_do_not_go_to_a_terminal) {
    support::write_file("file", "x");
    for (const char *format : {"tar", "cpio"}) {
        support::terminal screen;
        support::outcome end = support::in_child([&] {
            dup2(screen.open_end(), 1);
            execl(program.c_str(), "vop", format, "file", nullptr);
        });
        EXPECT_EQ(end.err,
                  "vop: standard output is a terminal: the archive needs a "
                  "file or a pipe\n");
        EXPECT_EQ(end.exit_status, 255);
    }
}

TEST(vop_pack, nothing_waits_for_paths_from_a_terminal) {
    support::terminal screen;
    support::outcome end = support::in_child([&] {
        dup2(screen.open_end(), 0);
        execl(program.c_str(), "vop", "tar", nullptr);
    });
    EXPECT_EQ(end.err, "no path given\n" + tar_usage);
    EXPECT_EQ(end.exit_status, 255);
}

// What a terminal shows of a program that waits for paths, until `wanted` is
// among it, or, when nothing is wanted, until so many microseconds are over;
// then the program's input ends.
std::string shown_until(const std::string &wanted, const std::string &input,
                        const char *kind, const char *no_color = "",
                        useconds_t patience = 0) {
    support::terminal screen;
    int end = screen.open_end();
    int paths[2];
    EXPECT_EQ(pipe(paths), 0);
    fcntl(paths[1], F_SETFD, FD_CLOEXEC);
    pid_t child = fork();
    if (child == 0) {
        dup2(paths[0], 0);
        dup2(open("/dev/null", O_WRONLY), 1);
        dup2(end, 2);
        setenv("TERM", kind, 1);
        setenv("NO_COLOR", no_color, 1);
        execl(program.c_str(), "vop", "tar", nullptr);
        _exit(127);
    }
    close(end);
    close(paths[0]);
    EXPECT_EQ(write(paths[1], input.data(), input.size()),
              static_cast<ssize_t>(input.size()));
    if (wanted.empty()) {
        usleep(patience);
        close(paths[1]);
    }
    std::string shown;
    char text[1000];
    bool is_open = !wanted.empty();
    for (ssize_t n; (n = read(screen.master, text, sizeof text)) > 0;) {
        shown.append(text, static_cast<size_t>(n));
        if (is_open && shown.find(wanted) != std::string::npos) {
            close(paths[1]);
            is_open = false;
        }
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    return shown;
}

TEST(vop_pack, long_work_shows_its_progress_on_a_terminal) {
    support::write_file("file", std::string(2 << 20, 'x'));
    const std::string line = "\r\033[K2 entries, 4 MB: file\r";
    std::string shown = shown_until(line, "file\nfile\n", "xterm");
    EXPECT_EQ(shown.substr(shown.size() - 4), "\r\033[K");
    shown.resize(shown.size() - 4);
    while (shown.compare(0, line.size(), line) == 0)
        shown.erase(0, line.size());
    EXPECT_EQ(shown, "");
}

TEST(vop_pack, short_work_and_plain_terminals_show_nothing) {
    support::write_file("file", "x");
    EXPECT_EQ(shown_until("", "file\n", "xterm"), "");
    constexpr useconds_t long_enough = 1600000;  // it would appear after 1 s
    EXPECT_EQ(shown_until("", "file\n", "dumb", "", long_enough), "");
    EXPECT_EQ(shown_until("", "file\n", "xterm", "1", long_enough), "");
}

// What a reader makes of an archive of the tree.
void expect_tree_from(const std::string &command) {
    make_tree();
    support::make_folders("out");
    setenv("vop", program.c_str(), 1);
    support::outcome end = support::run_program({"sh", "-c", command});
    EXPECT_EQ(end.exit_status, 0) << end.err;
    EXPECT_EQ(support::tree_lines("out/tree"), support::tree_lines("tree"));
}

TEST(vop_pack, gnu_tar_unpacks_what_was_packed) {
    expect_tree_from("$vop tar tree | tar -xpf - -C out");
}

TEST(vop_pack, bsdtar_unpacks_what_was_packed) {
    expect_tree_from("$vop tar tree | bsdtar -xpf - -C out");
}

TEST(vop_pack, gnu_cpio_unpacks_what_was_packed) {
    expect_tree_from("$vop cpio tree | (cd out && cpio -idm --quiet)");
}

TEST(vop_pack, bsdtar_unpacks_cpio_archives) {
    expect_tree_from("$vop cpio tree | bsdtar -xpf - -C out");
}

TEST(vop_pack, deep_trees_need_no_deep_stack) {
    std::string path = "d";
    for (int i = 0; i < 400; i++)
        path += "/d";
    support::make_folders(path);
    support::outcome end = support::run_program(
        {"sh", "-c",
         "ulimit -s 128; ulimit -n 16; " + program + " cpio d 2>/dev/null"});
    EXPECT_EQ(end.exit_status, 1);  // names become too long on the way
    EXPECT_EQ(end.out.find("TRAILER!!!") != std::string::npos, true);
}

}  // namespace
