// file_io_test.cpp: whole-or-nothing writing (the savers' failures keep old files: see their tests).
#include "file/file_io.h"

#include <sys/stat.h>

#include "file_test_util.h"

using namespace filetest;

// The target stays untouched until the commit and a dropped writer leaves no temporary behind; a link
// is written through, not replaced; folders are refused.
TEST(FileWriter, CommitsThroughALinkAndRefusesFolders)
{
    TempDir dir;
    const std::string target = dir / "t.bin", link = dir / "l.bin";
    WriteBytes(target, {1});
    ASSERT_EQ(0, symlink(target.c_str(), link.c_str()));
    {
        CFileWriter dropped;
        ASSERT_TRUE(dropped.Open(link.c_str()));
        ASSERT_TRUE(dropped.Write("ab", 2));
        EXPECT_EQ(3u, dir.Count());
    }
    EXPECT_EQ(std::vector<uint8_t>{1}, ReadBytes(target));
    CFileWriter file;
    ASSERT_TRUE(file.Open(link.c_str()));
    ASSERT_TRUE(file.Write("xy", 2));
    EXPECT_EQ(std::vector<uint8_t>{1}, ReadBytes(target));
    ASSERT_TRUE(file.Commit());
    struct stat st;
    ASSERT_EQ(0, lstat(link.c_str(), &st));
    EXPECT_TRUE(S_ISLNK(st.st_mode));
    EXPECT_EQ((std::vector<uint8_t>{'x', 'y'}), ReadBytes(target));
    EXPECT_FALSE(file.Open(dir.path().c_str()));
    EXPECT_FALSE(file.Open((dir / "missing/f.bin").c_str()));
    EXPECT_EQ(2u, dir.Count());
}
