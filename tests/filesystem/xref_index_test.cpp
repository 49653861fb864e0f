// SPDX-License-Identifier: MIT
#include "filesystem/xref_index.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using ky::impl::FileReference;
using ky::impl::XRefIndex;

std::string shown(const FileReference& reference)
{
    std::string text = reference.isAbsolute() ? "/" : reference.leadsOut() ? "^" : "";
    for (const std::string_view component : reference.components())
        text += "[" + std::string(component) + "]";
    return text + (reference.hasFileName() ? "" : "!");
}

TEST(FileReference, TakesPathsOfAnySystemApart)
{
    const char* const cases[][2] = {
        {"a/b\\c", "[a][b][c]"},
        {"/a//./b", "/[a][b]"},
        {"C:\\a\\b", "/[C:][a][b]"},
        {"c:a", "[c:][a]"},
        {"C:", "[C:]!"},
        {"\\\\server\\share\\a", "/[server][share][a]"},
        {"\\\\?\\C:\\a", "/[C:][a]"},
        {"//?/unc/server/share/a", "/[server][share][a]"},
        {"\\\\?\\UNCLE\\a", "[UNCLE][a]"},
        {"a/../b", "[b]"},
        {"../../a", "^[a]"},
        {"a/../../b", "^[b]"},
        {"a/b/", "[a][b]!"},
        {"a/.", "[a]!"},
        {"a/b/..", "[a]!"},
        {"", "!"},
        {"1:/a", "[1:][a]"},
        {"{:/a", "[{:][a]"},
        {"//?/unc", "[unc]"},
        {"//?/unc-a/b", "[unc-a][b]"},
        {"//.?/a", "/[.?][a]"},
        {"//?a/b", "/[?a][b]"},
        {"...", "[...]"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(shown(FileReference(text)), expected) << text;
    FileReference joined("D:/docs/plans");
    joined.append("..\\img/x.png");
    EXPECT_EQ(shown(joined), "/[D:][docs][img][x.png]");
    FileReference out("D:/docs");
    out.append("../../../x");
    EXPECT_EQ(shown(out), "/[D:][x]") << "a drive stays";
}

TEST(XRefIndex, HoldsManyFilesInLittleMemory)
{
    constexpr std::uint32_t folderCount = 1000;
    constexpr std::uint32_t filesPerFolder = 100;
    XRefIndex index;
    index.addRoot("/root");
    const std::uint32_t root = index.addRootFolder();
    for (std::uint32_t f = 0; f < folderCount; ++f)
    {
        const std::uint32_t folder = index.addFolder(root, "folder" + std::to_string(f));
        for (std::uint32_t i = 0; i + 1 < filesPerFolder; ++i)
            index.addFile(folder, "document_" + std::to_string(f) + "_" + std::to_string(i) + ".txt");
        index.addFile(folder, "index.html");
    }
    index.finish();
    EXPECT_FALSE(index.isFull());
    EXPECT_EQ(index.fileCount(), folderCount * filesPerFolder);
    // Names of about 19 bytes.
    EXPECT_LT(index.memoryUsage(), index.fileCount() * (24 + 20));

    std::uint32_t pages = 0;
    for (std::uint32_t file = index.firstFile("INDEX.html"); file != XRefIndex::none; file = index.nextFile(file))
    {
        EXPECT_EQ(index.fileName(file), "index.html");
        ++pages;
    }
    EXPECT_EQ(pages, folderCount);
    for (std::uint32_t f = 0; f < folderCount; f += 7)
    {
        const std::string name = "document_" + std::to_string(f) + "_5.txt";
        const std::uint32_t file = index.firstFile(name);
        ASSERT_NE(file, XRefIndex::none);
        EXPECT_EQ(index.nextFile(file), XRefIndex::none);
        std::string path;
        index.appendRelativePath(path, file);
        EXPECT_EQ(path, "folder" + std::to_string(f) + "/" + name);
    }
    EXPECT_EQ(index.firstFile("document_1_99.txt"), XRefIndex::none);
}

} // namespace
