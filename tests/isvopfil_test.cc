// isvopfil_test.cc: the names of control files.
#include <gtest/gtest.h>
#include <tovan/dospath.h>

TEST(isvopfil, the_two_exact_names) {
    EXPECT_EQ(isvopfil("vopfile"), 1);
    EXPECT_EQ(isvopfil("vopfile2"), 1);
    for (const char *name : {"vopfile3", "Vopfile", "VOPFILE", "", "vopfil",
                             "vopfile22", "vopfile ", "x/vopfile"}) {
        EXPECT_EQ(isvopfil(name), 0) << name;
    }
}
