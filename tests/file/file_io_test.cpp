// file_io_test.cpp: whole-or-nothing writing and size-aware reading.
#include "file/file_io.h"

#include <sys/stat.h>

#include "file_test_util.h"

using namespace filetest;

TEST(FileWriter, CommitReplacesDiscardKeeps)
{
    TempDir dir;
    const std::string path = dir / "f.bin";
    WriteBytes(path, {9, 9});
    {
        CFileWriter file;
        ASSERT_TRUE(file.Open(path.c_str()));
        ASSERT_TRUE(file.Write("abc", 3));
        EXPECT_EQ((std::vector<uint8_t>{9, 9}), ReadBytes(path));  // untouched until the commit
        EXPECT_EQ(2u, dir.Count());
    }  // dropped without a commit
    EXPECT_EQ((std::vector<uint8_t>{9, 9}), ReadBytes(path));
    EXPECT_EQ(1u, dir.Count());
    CFileWriter file;
    ASSERT_TRUE(file.Open(path.c_str()));
    ASSERT_TRUE(file.Write("abc", 3));
    ASSERT_TRUE(file.Commit());
    EXPECT_EQ((std::vector<uint8_t>{'a', 'b', 'c'}), ReadBytes(path));
    EXPECT_EQ(1u, dir.Count());
}

TEST(FileWriter, WritesThroughALinkAndRefusesFolders)
{
    TempDir dir;
    const std::string target = dir / "t.bin", link = dir / "l.bin";
    WriteBytes(target, {1});
    ASSERT_EQ(0, symlink(target.c_str(), link.c_str()));
    CFileWriter file;
    ASSERT_TRUE(file.Open(link.c_str()));
    ASSERT_TRUE(file.Write("xy", 2));
    ASSERT_TRUE(file.Commit());
    struct stat st;
    ASSERT_EQ(0, lstat(link.c_str(), &st));
    EXPECT_TRUE(S_ISLNK(st.st_mode));
    EXPECT_EQ((std::vector<uint8_t>{'x', 'y'}), ReadBytes(target));
    EXPECT_FALSE(file.Open(dir.path().c_str()));
    EXPECT_FALSE(file.Open((dir / "missing/f.bin").c_str()));
    EXPECT_EQ(2u, dir.Count());
}

TEST(FileReader, SizeSeekAndShortReads)
{
    TempDir dir;
    WriteBytes(dir / "r.bin", {1, 2, 3, 4, 5});
    CFileReader file;
    ASSERT_TRUE(file.Open((dir / "r.bin").c_str()));
    EXPECT_EQ(5u, file.Size());
    uint8_t b[3];
    ASSERT_TRUE(file.Seek(3));
    EXPECT_FALSE(file.Read(b, 3));  // folders and devices: the loaders' rows in tests/hostile
}
