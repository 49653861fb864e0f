// SPDX-License-Identifier: MIT
#include "support/temp_dir.h"

#include <ky/kyDirUtils.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <stdexcept>

namespace
{

using namespace ky::test;
using ky::kyDirUtils;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Names = std::vector<std::string>;

/// Writes down every call as "enter FOLDER", "file FOLDER NAME" ..., the root being "R", and ends the walk at one.
class Recorder : public kyDirUtils::FileSystemVisitor
{
public:
    explicit Recorder(std::string root, std::string vetoAt = "no such call")
        : calls(),
          mRoot(std::move(root)),
          mVetoAt(std::move(vetoAt))
    {
    }

    bool onEnterFolder(const std::string& folder) override { return note("enter", folder, ""); }
    bool onFile(const std::string& folder, const std::string& name) override { return note("file", folder, name); }
    bool onFolder(const std::string& folder, const std::string& name) override { return note("folder", folder, name); }
    bool onLeaveFolder(const std::string& folder) override { return note("leave", folder, ""); }

    Names calls;

private:
    bool note(const std::string& call, const std::string& folder, const std::string& name)
    {
        const std::string shown = folder.rfind(mRoot, 0) == 0 ? "R" + folder.substr(mRoot.size()) : folder;
        calls.push_back(call + " " + shown + (name.empty() ? "" : " " + name));
        return call != mVetoAt;
    }

    std::string mRoot;
    std::string mVetoAt;
};

std::filesystem::path toPath(const std::string& utf8)
{
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

/// False where links cannot be made.
bool linkFolder(const std::string& target, const std::string& link)
{
    std::error_code error;
    std::filesystem::create_directory_symlink(toPath(target), toPath(link), error);
    return !error;
}

class Visitor : public testing::Test
{
protected:
    TempDir dir;
};

TEST_F(Visitor, FoldersComeBeforeTheirContentAndAreLeftBehindIt)
{
    makeFolder(dir.file("sub/deep"));
    writeFile(dir.file("sub/deep/f.txt"), "");
    Recorder recorder(dir.path());
    EXPECT_TRUE(recorder.visit(dir.path(), true, nullptr, false));
    EXPECT_THAT(recorder.calls,
                ElementsAre("enter R", "folder R sub", "enter R/sub", "folder R/sub deep", "enter R/sub/deep",
                            "file R/sub/deep f.txt", "leave R/sub/deep", "leave R/sub", "leave R"));
    Recorder flat(dir.path());
    EXPECT_TRUE(flat.visit(dir.path(), false, nullptr, false));
    EXPECT_THAT(flat.calls, ElementsAre("enter R", "folder R sub", "leave R"));
    Recorder separated(dir.path() + "\\");
    EXPECT_TRUE(separated.visit(dir.path() + "\\", true, nullptr, false));
    EXPECT_THAT(separated.calls, Contains("enter Rsub/deep")) << "no second separator";
}

TEST_F(Visitor, AVetoEndsEverythingAtOnce)
{
    makeFolder(dir.file("sub/deep"));
    writeFile(dir.file("sub/deep/f.txt"), "");
    const std::vector<std::pair<std::string, Names>> cases = {
        {"enter", {"enter R"}},
        {"folder", {"enter R", "folder R sub"}},
        {"file",
         {"enter R", "folder R sub", "enter R/sub", "folder R/sub deep", "enter R/sub/deep", "file R/sub/deep f.txt"}},
        {"leave",
         {"enter R", "folder R sub", "enter R/sub", "folder R/sub deep", "enter R/sub/deep", "file R/sub/deep f.txt",
          "leave R/sub/deep"}},
    };
    for (const auto& [veto, calls] : cases)
    {
        Recorder recorder(dir.path(), veto);
        EXPECT_FALSE(recorder.visit(dir.path(), true, nullptr, false)) << veto;
        EXPECT_EQ(recorder.calls, calls) << veto;
    }
}

TEST_F(Visitor, FiltersTakeFilesByTheEndOfTheName)
{
    for (const char* name : {"a.txt", "B.TXT", "a.txt.bak", ".txt", "txt", "c.xtxt", "\xC3\x84.Txt"})
        writeFile(dir.file(name), "");
    makeFolder(dir.file("folder.bak"));
    const struct
    {
        Names filters;
        bool fold;
        Names found;
    } cases[] = {
        {{"", "TXT"}, true, {"a.txt", "B.TXT", ".txt", "\xC3\x84.Txt"}},
        {{"txt"}, false, {"a.txt", ".txt"}},
        {{".TXT"}, false, {"B.TXT"}},
        {{"txt", ".bak"}, false, {"a.txt", ".txt", "a.txt.bak"}},
        {{".much-longer-than-the-names"}, true, {}},
        {{"", ""}, false, {"a.txt", "B.TXT", "a.txt.bak", ".txt", "txt", "c.xtxt", "\xC3\x84.Txt"}},
        {{}, false, {"a.txt", "B.TXT", "a.txt.bak", ".txt", "txt", "c.xtxt", "\xC3\x84.Txt"}},
    };
    for (const auto& [filters, fold, found] : cases)
    {
        Names files;
        Names folders;
        kyDirUtils::GlobFileAndFolderUtf8(dir.path(), &files, &folders, &filters, 4 | (fold ? 8 : 0));
        EXPECT_THAT(files, testing::UnorderedElementsAreArray(found)) << testing::PrintToString(filters);
        EXPECT_THAT(folders, ElementsAre("folder.bak"));
    }
}

TEST_F(Visitor, GlobFlags)
{
    makeFolder(dir.file("x"));
    writeFile(dir.file("x/y.txt"), "");
    const std::string root = dir.path() + "/";
    Names files = {"old"};
    Names folders = {"old"};
    kyDirUtils::GlobFileAndFolderUtf8(root, &files, &folders, nullptr, 0);
    EXPECT_THAT(files, IsEmpty());
    EXPECT_THAT(folders, ElementsAre(dir.file("x")));
    kyDirUtils::GlobFileAndFolderUtf8(root, &files, &folders, nullptr, 1 | 2);
    EXPECT_THAT(files, ElementsAre(dir.file("x/y.txt")));
    EXPECT_THAT(folders, ElementsAre(dir.file("x"), dir.file("x")));
    kyDirUtils::GlobFileAndFolderUtf8(root, &files, nullptr, nullptr, 1 | 2 | 4);
    EXPECT_THAT(files, ElementsAre(dir.file("x/y.txt"), "y.txt"));
    kyDirUtils::GlobFileAndFolderUtf8(dir.file("missing"), &files, &folders, nullptr, 0);
    EXPECT_THAT(files, IsEmpty());
    EXPECT_THAT(folders, IsEmpty());
}

TEST_F(Visitor, RootsThatCannotBeListedGiveNoCall)
{
    writeFile(dir.file("file"), "");
    for (const std::string& root : {dir.file("missing"), dir.file("file")})
    {
        Recorder recorder(dir.path());
        EXPECT_TRUE(recorder.visit(root, true, nullptr, false));
        EXPECT_THAT(recorder.calls, IsEmpty());
    }
}

TEST_F(Visitor, LinksToFoldersAreReportedButNotEntered)
{
    makeFolder(dir.file("real/inner"));
    writeFile(dir.file("real/inner/f"), "");
    if (!linkFolder(dir.path(), dir.file("real/loop")) || !linkFolder(dir.file("real"), dir.file("alias")))
        GTEST_SKIP() << "links cannot be made here";
    linkFolder(dir.file("nowhere"), dir.file("real/dead"));
    Recorder recorder(dir.path());
    EXPECT_TRUE(recorder.visit(dir.path(), true, nullptr, false));
    EXPECT_THAT(recorder.calls, Contains("folder R alias"));
    EXPECT_THAT(recorder.calls, Contains("folder R/real loop"));
    EXPECT_EQ(std::count(recorder.calls.begin(), recorder.calls.end(), "file R/real/inner f"), 1);
    EXPECT_EQ(recorder.calls.size(), 3u * 2 + 4 + 2) << testing::PrintToString(recorder.calls);
    Recorder throughLink(dir.path());
    EXPECT_TRUE(throughLink.visit(dir.file("alias"), false, nullptr, false));
    EXPECT_THAT(throughLink.calls, Contains("folder R/alias inner"));
}

TEST_F(Visitor, PathsLongerThanTheUsualLimit)
{
    std::string folder = dir.path();
    std::string shown = "R";
    for (int level = 0; level < 8; ++level)
    {
        const std::string name(60, static_cast<char>('a' + level));
        folder += "/" + name;
        shown += "/" + name;
        std::filesystem::create_directory(toPath(folder));
    }
    Recorder recorder(dir.path());
    EXPECT_TRUE(recorder.visit(dir.path(), true, nullptr, false));
    EXPECT_THAT(recorder.calls, Contains("enter " + shown));
    Recorder deep(dir.path());
    EXPECT_TRUE(deep.visit(folder, true, nullptr, false));
    EXPECT_THAT(deep.calls, ElementsAre("enter " + shown, "leave " + shown));
}

/// Removes what it has seen, each folder when it is left.
class Remover : public kyDirUtils::FileSystemVisitor
{
public:
    bool onFile(const std::string& folder, const std::string& name) override
    {
        return std::filesystem::remove(toPath(folder + "/" + name));
    }
    bool onLeaveFolder(const std::string& folder) override { return std::filesystem::remove(toPath(folder)); }
};

TEST_F(Visitor, WhatIsVisitedMayBeRemoved)
{
    for (const char* folder : {"tree/a/b", "tree/a/c", "tree/d"})
    {
        makeFolder(dir.file(folder));
        for (int i = 0; i < 20; ++i)
            writeFile(dir.file(folder + ("/" + std::to_string(i))), "");
    }
    EXPECT_TRUE(Remover().visit(dir.file("tree"), true, nullptr, false));
    EXPECT_FALSE(exists(dir.file("tree")));
}

/// Copies itself in the middle of its walk, then breaks it off by an exception.
class Thrower : public kyDirUtils::FileSystemVisitor
{
public:
    bool onFile(const std::string&, const std::string& name) override
    {
        files.push_back(name);
        if (!throws)
            return true;
        copy = std::make_shared<Thrower>(*this);
        throw std::runtime_error("enough");
    }

    bool throws = true;
    Names files;
    std::shared_ptr<Thrower> copy;
};

TEST_F(Visitor, FiltersEndWithTheWalkHoweverItEnds)
{
    writeFile(dir.file("a.txt"), "");
    writeFile(dir.file("b.bin"), "");
    const Names filters = {"txt"};
    Thrower thrower;
    EXPECT_THROW(thrower.visit(dir.path(), false, &filters, false), std::runtime_error);
    std::shared_ptr<Thrower> copy = thrower.copy;
    for (Thrower* visitor : {&thrower, copy.get()})
    {
        visitor->throws = false;
        visitor->files.clear();
        EXPECT_TRUE(visitor->visit(dir.path(), false, &filters, false));
        EXPECT_THAT(visitor->files, ElementsAre("a.txt"));
        visitor->files.clear();
        EXPECT_TRUE(visitor->visit(dir.path(), false, nullptr, false));
        EXPECT_THAT(visitor->files, UnorderedElementsAre("a.txt", "b.bin"));
    }
}

} // namespace
