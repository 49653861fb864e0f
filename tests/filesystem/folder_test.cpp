// SPDX-License-Identifier: MIT
#include "support/child_process.h"
#include "support/soak.h"
#include "support/temp_dir.h"

#include <ky/kyDirUtils.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <set>

namespace
{

using namespace ky::test;
using ky::kyDirUtils;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

/// A folder with an ASCII name, for the functions that take narrow text on Windows.
class Folders : public testing::Test
{
protected:
    Folders() : root(kyDirUtils::GetTempFileUtf8(kyDirUtils::ExtractFolder(dir.path()), "ky")) {}
    ~Folders() override { kyDirUtils::ClearFolderUtf8(root, true, nullptr, nullptr); }

    TempDir dir;
    std::string root;
};

TEST_F(Folders, MissingFoldersAreMade)
{
    EXPECT_TRUE(kyDirUtils::MkpathUtf8(root + "/a/b\\c//d/"));
    EXPECT_TRUE(kyDirUtils::DirExistsUtf8(root + "/a/b/c/d"));
    EXPECT_TRUE(kyDirUtils::MkpathUtf8(root + "/a/b/c"));
    EXPECT_TRUE(kyDirUtils::MkpathUtf8(""));
    writeFile(root + "/a/file", "");
    EXPECT_FALSE(kyDirUtils::MkpathUtf8(root + "/a/file"));
    EXPECT_FALSE(kyDirUtils::MkpathUtf8(root + "/a/file/b"));
    EXPECT_FALSE(kyDirUtils::MkpathUtf8(root + "/" + std::string(300, 'n') + "/b"));
}

TEST_F(Folders, TheWorkingFolder)
{
    const std::string before = kyDirUtils::GetCurrentWorkingDirUtf8();
    ASSERT_FALSE(before.empty());
    EXPECT_FALSE(kyDirUtils::SetCurrentWorkingDirUtf8(dir.file("missing")));
    EXPECT_EQ(kyDirUtils::GetCurrentWorkingDirUtf8(), before);
    EXPECT_TRUE(kyDirUtils::SetCurrentWorkingDirUtf8(dir.path()));
    EXPECT_THAT(kyDirUtils::GetCurrentWorkingDirUtf8(), EndsWith(dir.path().substr(dir.path().rfind('/') + 1)));
    EXPECT_TRUE(kyDirUtils::MkpathUtf8("relative/folder"));
    EXPECT_TRUE(kyDirUtils::SetCurrentWorkingDirUtf8(before));
    EXPECT_TRUE(exists(dir.file("relative/folder")));
}

TEST_F(Folders, TemporaryNamesAreFreeAndDiffer)
{
    ASSERT_TRUE(kyDirUtils::MkpathUtf8(root + "/x.tmp/in"));
    std::set<std::string> names;
    for (int i = 0; i < 50; ++i)
    {
        const std::string name = kyDirUtils::GetTempFileUtf8(dir.path(), "pre");
        EXPECT_THAT(name, EndsWith(".tmp"));
        const std::string base = kyDirUtils::ExtractFileBaseName(name);
        EXPECT_THAT(base, StartsWith("pre"));
        EXPECT_EQ(base.find_first_not_of("0123456789abcdefABCDEF", 3), std::string::npos) << base;
        EXPECT_FALSE(exists(name));
        writeFile(name, "");
        EXPECT_TRUE(names.insert(name).second);
        EXPECT_TRUE(exists(dir.file(base + ".tmp")));
    }
    const std::string text = kyDirUtils::GetTempFileUtf8(dir.path(), "pre", ".txt");
    EXPECT_THAT(text, EndsWith(".txt"));
    EXPECT_FALSE(exists(text));
    // The folder's own part is not spared.
    EXPECT_THAT(kyDirUtils::GetTempFileUtf8(root + "/x.tmp/in", "pre", ".q"), HasSubstr("x.q"));
    EXPECT_THAT(kyDirUtils::GetTempFileUtf8(dir.file("missing"), "pre"), IsEmpty());
    EXPECT_THAT(kyDirUtils::GetTempFileUtf8(dir.file("missing"), "pre", ".txt"), IsEmpty());
}

TEST_F(Folders, TakenTemporaryNamesAreNotGivenOut)
{
    const int taken = isSoak() ? 0xFFFF : 200;
    for (int number = 1; number <= taken; ++number)
    {
        std::array<char, 16> name{};
        std::snprintf(name.data(), name.size(), "pre%X.tmp", static_cast<unsigned>(number));
        writeFile(dir.file(name.data()), "taken");
    }
    int given = 0;
    for (const std::string& name :
         {kyDirUtils::GetTempFileUtf8(dir.path(), "pre"), kyDirUtils::GetTempFileUtf8(dir.path(), "pre", ".tmp"),
          kyDirUtils::GetTempFileUtf8(dir.path(), "pre", ".txt")})
        given += !name.empty() && exists(name);
    const auto left = std::distance(fs::directory_iterator(std::u8string(dir.path().begin(), dir.path().end())),
                                    fs::directory_iterator());
    account("temporary names", {taken, "names taken before"}, {}, {given + taken - left, "names given or removed"});
}

TEST_F(Folders, FreeSpaceIsToldOfAbsolutePaths)
{
    std::string volume = "old";
    const unsigned long long bytes = kyDirUtils::GetAvailableDiskSizeUtf8(dir.path(), volume);
    EXPECT_GT(bytes, 0u);
    EXPECT_THAT(dir.path() + "/", StartsWith(kyDirUtils::GetAbsolutePathUtf8(volume)));
    const fs::space_info space = fs::space(std::u8string(volume.begin(), volume.end()));
    EXPECT_NEAR(static_cast<double>(bytes), static_cast<double>(space.available), 0.2 * static_cast<double>(bytes));
    std::string again;
    EXPECT_GT(kyDirUtils::GetAvailableDiskSizeUtf8(dir.file("missing/too"), again), 0u);
    EXPECT_EQ(again, volume);
    for (const char* path : {"", "a", "a/b", "ab:c", ".", "1"})
    {
        volume = "old";
        EXPECT_EQ(kyDirUtils::GetAvailableDiskSizeUtf8(path, volume), 0u) << path;
        EXPECT_THAT(volume, IsEmpty()) << path;
    }
}

TEST_F(Folders, FoldersOfTheSystem)
{
    std::string program = "old";
    EXPECT_TRUE(kyDirUtils::GetFolderOfCurrentProcessUtf8(program));
    EXPECT_TRUE(fs::equivalent(std::u8string(program.begin(), program.end()),
                               std::u8string_view(reinterpret_cast<const char8_t*>(binFolder().c_str()))));
    EXPECT_TRUE(kyDirUtils::DirExistsUtf8(kyDirUtils::GetTempFolderUtf8()));
    for (const auto folder :
         {kyDirUtils::GetFontFolderUtf8, kyDirUtils::GetCommonAppDataFolderUtf8, kyDirUtils::GetLocalAppDataFolderUtf8,
          kyDirUtils::GetAppDataFolderUtf8, kyDirUtils::GetPicturesFolderUtf8, kyDirUtils::GetDocumentsFolderUtf8,
          kyDirUtils::GetDownloadFolderUtf8})
    {
        const std::string path = folder();
        EXPECT_TRUE(path == "." || !kyDirUtils::IsPathRelativeUtf8(path)) << path;
    }
    EXPECT_FALSE(kyDirUtils::IsPathRelativeUtf8(kyDirUtils::GetAppDataFolderUtf8()));
}

} // namespace
