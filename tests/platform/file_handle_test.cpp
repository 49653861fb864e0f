// SPDX-License-Identifier: MIT
#include "platform/file_handle.h"
#include "support/fs_path.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

namespace
{

namespace fs = std::filesystem;

using namespace ky::impl::native;
using ky::test::fsPath;
using ky::test::TempDir;

bool put(FileHandle& file, const std::string& text)
{
    std::size_t written = 0;
    ErrorCode error = 0;
    return file.write(text.data(), text.size(), written, error) && written == text.size();
}

TEST(FileHandle, AppendsAtTheEndWhateverOthersWrote)
{
    const TempDir dir;
    const std::string path = dir.file("a.txt");
    ErrorCode error = 0;
    FileHandle first = FileHandle::open(path, OpenMode::Append, error);
    FileHandle second = FileHandle::open(path, OpenMode::Append, error);
    ASSERT_TRUE(first.isOpen() && second.isOpen());
    EXPECT_TRUE(put(first, "one ") && put(second, "two ") && put(first, "three"));
    EXPECT_EQ(first.size(), 13);
    EXPECT_EQ(ky::test::readFile(path), "one two three");
}

TEST(FileHandle, TellsMissingFoldersAndTakenNames)
{
    const TempDir dir;
    ErrorCode error = 0;
    EXPECT_FALSE(FileHandle::open(dir.file("none"), OpenMode::Read, error).isOpen());
    EXPECT_TRUE(isMissingFile(error));
    for (const OpenMode mode : {OpenMode::Read, OpenMode::Append, OpenMode::Truncate})
    {
        EXPECT_FALSE(FileHandle::open(dir.path(), mode, error).isOpen());
        EXPECT_FALSE(isMissingFile(error));
    }
    ky::test::writeFile(dir.file("taken"), "x");
    EXPECT_FALSE(FileHandle::open(dir.file("taken"), OpenMode::CreateNew, error).isOpen());
}

TEST(FileHandle, RenamesAndRemovesWhileOpen)
{
    const TempDir dir;
    ErrorCode error = 0;
    ky::test::writeFile(dir.file("old"), "old");
    FileHandle held = FileHandle::open(dir.file("old"), OpenMode::Append, error);
    ASSERT_TRUE(held.isOpen());
    EXPECT_EQ(renameFile(dir.file("old"), dir.file("new")), 0);
    EXPECT_FALSE(pathExists(dir.file("old")));
    EXPECT_TRUE(put(held, "er"));
    held.close();
    EXPECT_EQ(ky::test::readFile(dir.file("new")), "older");
    EXPECT_EQ(fileSizeOf(dir.file("new")), 5);
    EXPECT_EQ(removeFile(dir.file("new")), 0);
    EXPECT_TRUE(isMissingFile(removeFile(dir.file("new"))));
}

TEST(FileHandle, ReplacesExistingAndMissingTargets)
{
    const TempDir dir;
    ErrorCode error = 0;
    ky::test::writeFile(dir.file("target"), "before");
    for (const char* const name : {"target", "target", "fresh"})
    {
        FileHandle file = FileHandle::open(dir.file("temporary"), OpenMode::CreatePrivate, error);
        EXPECT_TRUE(put(file, name));
        EXPECT_EQ(passRights(dir.file(name), file, dir.file("temporary")), 0);
        EXPECT_TRUE(file.close());
        EXPECT_EQ(replaceFile(dir.file("temporary"), dir.file(name)), 0);
        EXPECT_EQ(ky::test::readFile(dir.file(name)), name);
        EXPECT_FALSE(pathExists(dir.file("temporary")));
    }
}

// Whoever may write to the folder could otherwise have another file's rights changed.
TEST(FileHandle, RightsGoToTheOpenFileWhateverHasItsName)
{
    const TempDir dir;
    const auto rightsOf = [&](const char* name) { return fs::status(fsPath(dir.file(name))).permissions(); };
    for (const char* const name : {"model", "victim"})
        ky::test::writeFile(dir.file(name), "");
    fs::permissions(fsPath(dir.file("model")), fs::perms::owner_all | fs::perms::others_read);
    fs::permissions(fsPath(dir.file("victim")), fs::perms::owner_read | fs::perms::owner_write);
    const fs::perms before = rightsOf("victim");
    if (before == rightsOf("model"))
        GTEST_SKIP() << "no rights in the mode of a file here";
    ErrorCode error = 0;
    FileHandle file = FileHandle::open(dir.file("open"), OpenMode::CreatePrivate, error);
    EXPECT_EQ(renameFile(dir.file("open"), dir.file("moved")), 0);
    fs::create_symlink(fsPath(dir.file("victim")), fsPath(dir.file("open")));
    EXPECT_EQ(passRights(dir.file("model"), file, dir.file("open")), 0);
    EXPECT_EQ(rightsOf("victim"), before);
    EXPECT_EQ(rightsOf("moved"), rightsOf("model"));
}

TEST(FileHandle, LongPathsWork)
{
    const TempDir dir;
    std::string folder = dir.path();
    while (folder.size() < 400)
        folder += "/" + std::string(60, 'd');
    // The standard library makes the folders on Linux only; elsewhere they need the prefix that is under test.
    std::string prefixed = folder;
    try
    {
        ky::test::makeFolder(prefixed);
    }
    catch (const std::exception&)
    {
        GTEST_SKIP() << "the standard library cannot make long paths here";
    }
    ErrorCode error = 0;
    FileHandle file = FileHandle::open(folder + "/x.txt", OpenMode::CreateNew, error);
    ASSERT_TRUE(file.isOpen()) << error;
    EXPECT_TRUE(put(file, "deep"));
    file.close();
    EXPECT_EQ(fileSizeOf(folder + "/x.txt"), 4);
    EXPECT_EQ(removeFile(folder + "/x.txt"), 0);
}

} // namespace
