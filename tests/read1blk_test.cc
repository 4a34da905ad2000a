// read1blk_test.cc: the first block of a file.
#include "support/tree.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <tovan/getdylin.h>
#include <unistd.h>
#include <string>

namespace {

struct owned_block : blk1 {
    owned_block() : blk1{} {
    }
    ~owned_block() {
        free(name);
    }
};

std::string content_of(const blk1 &block) {
    EXPECT_EQ(*block.end, '\0');
    return std::string(block.data, static_cast<size_t>(block.end - block.data));
}

TEST(read1blk, reads_up_to_1024_bytes) {
    for (size_t size : {0, 1, 1023, 1024, 1025, 100000}) {
        support::write_file("file", std::string(size, 'x'));
        owned_block block;
        EXPECT_EQ(read1blk("file", &block), &block);
        EXPECT_EQ(content_of(block),
                  std::string(std::min<size_t>(size, 1024), 'x'));
        EXPECT_STREQ(block.name, "file");
    }
}

TEST(read1blk, keeps_nuls) {
    support::write_file("file", std::string("a\0b", 3));
    owned_block block;
    EXPECT_EQ(content_of(*read1blk("file", &block)), std::string("a\0b", 3));
}

TEST(read1blk, reads_the_same_file_once) {
    support::write_file("file", "old");
    owned_block block;
    read1blk("file", &block);
    support::write_file("file", "new");
    EXPECT_EQ(content_of(*read1blk("file", &block)), "old");
    support::write_file("other", "other");
    EXPECT_EQ(content_of(*read1blk("other", &block)), "other");
    EXPECT_EQ(content_of(*read1blk("file", &block)), "new");
}

TEST(read1blk, has_a_record_of_its_own) {
    support::write_file("file", "content");
    blk1 *block = read1blk("file", nullptr);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(content_of(*block), "content");
    support::write_file("file", "changed");
    EXPECT_EQ(read1blk("file", nullptr), block);
    EXPECT_EQ(content_of(*block), "content");
}

TEST(read1blk, a_failure_leaves_no_name_in_the_record) {
    support::write_file("file", "old");
    owned_block block;
    read1blk("file", &block);
    EXPECT_EQ(read1blk("missing", &block), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(block.name, nullptr);
    support::write_file("file", "new");
    EXPECT_EQ(content_of(*read1blk("file", &block)), "new");
    EXPECT_EQ(read1blk(".", &block), nullptr);
    EXPECT_EQ(errno, EISDIR);
    EXPECT_EQ(block.name, nullptr);
}

TEST(read1blk, leaves_no_descriptor_open) {
    support::write_file("file", "x");
    int before = dup(0);
    close(before);
    owned_block block;
    for (const char *path : {"file", "missing", "."})
        read1blk(path, &block);
    int after = dup(0);
    close(after);
    EXPECT_EQ(after, before);
}

}  // namespace
