// SPDX-License-Identifier: MIT
#include "support/temp_dir.h"

#include <ky/kyDirUtils.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace
{

using namespace ky::test;
using ky::kyDirUtils;

namespace fs = std::filesystem;

fs::path toPath(const std::string& utf8) { return fs::path(std::u8string(utf8.begin(), utf8.end())); }

std::size_t entriesBelow(const std::string& folder)
{
    return static_cast<std::size_t>(
        std::distance(fs::recursive_directory_iterator(toPath(folder)), fs::recursive_directory_iterator()));
}

class Clear : public testing::Test
{
protected:
    void makeTree(const std::string& root)
    {
        for (const char* folder : {"/a/b/c", "/a/empty", "/d"})
        {
            makeFolder(root + folder);
            for (const char* name : {"/1", "/2", "/\xC3\xBC.txt"})
                writeFile(root + folder + name, "content");
        }
        makeFolder(root + "/e");
    }

    TempDir dir;
    std::string error = "old";
};

TEST_F(Clear, EmptiesAndRemoves)
{
    makeFolder(dir.file("a"));
    for (const char* spelling : {"tree", "tree/", "a/../tree"})
    {
        makeTree(dir.file("tree"));
        EXPECT_TRUE(kyDirUtils::ClearFolderUtf8(dir.file(spelling), false, &error, nullptr)) << error;
        EXPECT_EQ(error, "");
        EXPECT_TRUE(fs::is_empty(toPath(dir.file("tree"))));
        makeTree(dir.file("tree"));
        EXPECT_TRUE(kyDirUtils::ClearFolderUtf8(dir.file(spelling), true, nullptr, nullptr));
        EXPECT_FALSE(exists(dir.file("tree")));
    }
    EXPECT_TRUE(exists(dir.file("a")));
}

TEST_F(Clear, NothingToClear)
{
    writeFile(dir.file("file"), "");
    const bool canceled = true;
    for (const std::string& path : {dir.file("missing"), dir.file("file"), std::string()})
    {
        error = "old";
        EXPECT_TRUE(kyDirUtils::ClearFolderUtf8(path, true, &error, &canceled)) << path;
        EXPECT_EQ(error, "");
    }
    EXPECT_TRUE(exists(dir.file("file")));
}

TEST_F(Clear, ARaisedFlagStopsBehindTheFirstEntry)
{
    const bool canceled = true;
    makeTree(dir.file("tree"));
    makeFolder(dir.file("empty"));
    makeFolder(dir.file("files"));
    for (const char* name : {"files/1", "files/2"})
        writeFile(dir.file(name), "");
    for (const char* name : {"tree", "empty", "files"})
    {
        const std::size_t before = entriesBelow(dir.file(name));
        EXPECT_FALSE(kyDirUtils::ClearFolderUtf8(dir.file(name), true, &error, &canceled));
        EXPECT_EQ(error, "Canceled");
        EXPECT_GE(entriesBelow(dir.file(name)) + 1, before);
        EXPECT_FALSE(kyDirUtils::ClearFolderUtf8(dir.file(name), true, nullptr, &canceled));
    }
    const bool notCanceled = false;
    EXPECT_TRUE(kyDirUtils::ClearFolderUtf8(dir.file("tree"), true, &error, &notCanceled)) << error;
    EXPECT_FALSE(exists(dir.file("tree")));
}

TEST_F(Clear, LinksGoAndWhatTheyLeadToStays)
{
    makeTree(dir.file("outside"));
    makeTree(dir.file("tree"));
    const std::size_t before = entriesBelow(dir.file("outside"));
    std::error_code failed;
    fs::create_directory_symlink(toPath(dir.file("outside")), toPath(dir.file("tree/a/link")), failed);
    if (failed)
        GTEST_SKIP() << "links cannot be made here";
    fs::create_directory_symlink(toPath(dir.path()), toPath(dir.file("tree/a/b/up")));
    fs::create_symlink(toPath(dir.file("outside/d/1")), toPath(dir.file("tree/file")));
    fs::create_symlink(toPath(dir.file("nowhere")), toPath(dir.file("tree/dead")));
    EXPECT_TRUE(kyDirUtils::ClearFolderUtf8(dir.file("tree"), true, &error, nullptr)) << error;
    EXPECT_FALSE(exists(dir.file("tree")));
    EXPECT_EQ(entriesBelow(dir.file("outside")), before);

    // A link is no folder to be cleared, however it is spelled.
    fs::create_directory_symlink(toPath(dir.file("outside")), toPath(dir.file("root")));
    for (const char* spelling : {"root", "root/"})
    {
        EXPECT_FALSE(kyDirUtils::ClearFolderUtf8(dir.file(spelling), true, &error, nullptr));
        EXPECT_THAT(error, testing::StartsWith("FindFirstFileW error "));
        EXPECT_THAT(error, testing::EndsWith(" for " + dir.file(spelling)));
    }
    EXPECT_EQ(entriesBelow(dir.file("outside")), before);
    EXPECT_TRUE(exists(dir.file("root")));
}

TEST_F(Clear, PathsLongerThanTheUsualLimit)
{
    std::string folder = dir.file("deep");
    for (int level = 0; level < 8; ++level)
    {
        fs::create_directory(toPath(folder));
        writeFile(folder + "/f", "");
        folder += "/" + std::string(60, 'd');
    }
    EXPECT_TRUE(kyDirUtils::ClearFolderUtf8(dir.file("deep"), true, &error, nullptr)) << error;
    EXPECT_FALSE(exists(dir.file("deep")));
}

} // namespace
