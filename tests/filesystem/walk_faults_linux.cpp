// SPDX-License-Identifier: MIT
// Trees that no path could describe, and trees that change while they are walked.
#include "filesystem/folder_stack.h"

#include "support/soak.h"
#include "support/temp_dir.h"

#include <ky/kyDirUtils.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace
{

using namespace ky::test;
using ky::kyDirUtils;
using ky::impl::FolderStack;
using ky::impl::native::EntryKind;
using ky::impl::native::FolderEntry;
using testing::UnorderedElementsAre;
using Names = std::vector<std::string>;

/// `depth` folders one in the other, each with a file beside the next one; folder and file names carry the level.
void makeChain(const std::string& root, int depth, const std::string& filler)
{
    int at = open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int level = 0; level < depth; ++level)
    {
        const std::string number = std::to_string(level);
        close(openat(at, ("f" + number).c_str(), O_CREAT | O_WRONLY, 0666));
        ASSERT_EQ(mkdirat(at, ("d" + number + filler).c_str(), 0777), 0);
        const int below = openat(at, ("d" + number + filler).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        close(at);
        at = below;
    }
    close(at);
}

/// Removes everything below the root and returns the number of entries removed.
int removeTree(const std::string& root)
{
    FolderStack folders;
    int error = 0;
    int removed = 0;
    EXPECT_TRUE(folders.openRoot(root, ky::impl::native::RootLink::Refuse, error)) << error;
    for (;;)
    {
        FolderEntry entry;
        if (folders.current().next(entry))
        {
            if (entry.kind == EntryKind::Folder && folders.descend(error))
                continue;
        }
        else if (folders.depth() == 0)
            return removed;
        else
            folders.ascend();
        const int code = folders.current().removeEntry();
        EXPECT_EQ(code, 0) << "depth " << folders.depth();
        removed += code == 0;
        if (code != 0)
            return removed;
    }
}

class Counter : public kyDirUtils::FileSystemVisitor
{
public:
    bool onEnterFolder(const std::string& folder) override
    {
        if (folder.size() > deepest.size())
            deepest = folder;
        return ++entered > 0;
    }
    bool onFile(const std::string&, const std::string& name) override { return files.insert(name).second; }
    bool onLeaveFolder(const std::string&) override { return ++left > 0; }

    int entered = 0;
    int left = 0;
    std::string deepest;
    std::set<std::string> files;
};

/// Runs a function with a lower limit of open descriptors.
void withDescriptors(rlim_t limit, const std::function<void()>& body)
{
    rlimit before = {};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit lowered = {limit, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &lowered);
    body();
    setrlimit(RLIMIT_NOFILE, &before);
}

TEST(WalkFaults, DepthIsLimitedByNothing)
{
    const TempDir dir;
    constexpr int depth = 2000;
    const std::string filler(200, 'x');
    ASSERT_NO_FATAL_FAILURE(makeChain(dir.path(), depth, filler));
    for (const rlim_t descriptors : {rlim_t{1024}, rlim_t{16}})
    {
        withDescriptors(descriptors,
                        [&]
                        {
                            Counter counter;
                            EXPECT_TRUE(counter.visit(dir.path(), true, nullptr, false));
                            EXPECT_EQ(counter.entered, depth + 1) << descriptors;
                            EXPECT_EQ(counter.left, depth + 1);
                            EXPECT_EQ(counter.files.size(), std::size_t{depth});
                            EXPECT_GT(counter.deepest.size(), std::size_t{depth} * 200);
                            Counter fromThere;
                            EXPECT_TRUE(fromThere.visit(counter.deepest + "\\", true, nullptr, false));
                            EXPECT_EQ(fromThere.entered, 1);
                        });
    }
    withDescriptors(16, [&] { EXPECT_EQ(removeTree(dir.path()), 2 * depth); });
}

TEST(WalkFaults, NoDescriptorIsLeftForASecondFolder)
{
    const TempDir dir;
    makeFolder(dir.file("a/b"));
    const auto foldersEntered = [&]
    {
        Counter counter;
        EXPECT_TRUE(counter.visit(dir.path(), true, nullptr, false));
        return counter.entered;
    };
    EXPECT_EQ(foldersEntered(), 3);
    const int next = dup(0);
    close(next);
    withDescriptors(static_cast<rlim_t>(next) + 1, [&] { EXPECT_EQ(foldersEntered(), 1); });
}

TEST(WalkFaults, EveryNameTheSystemTakes)
{
    const TempDir dir;
    const Names folders = {"line\nbreak", std::string(255, 'n'), "bad \xFF\xC0 utf8", " ", "*?:|\"<>"};
    for (const std::string& folder : folders)
    {
        makeFolder(dir.path() + "/" + folder);
        writeFile(dir.path() + "/" + folder + "/f", "");
    }
    // It cannot be addressed, and would lead out of the folder if it were.
    close(open(dir.file("..\\x").c_str(), O_CREAT | O_WRONLY, 0666));
    ASSERT_EQ(mkdir(dir.file("back\\slash").c_str(), 0777), 0);
    Names foundFiles;
    Names foundFolders;
    kyDirUtils::GlobFileAndFolderUtf8(dir.path(), &foundFiles, &foundFolders, nullptr, 2 | 4);
    EXPECT_THAT(foundFolders, testing::UnorderedElementsAreArray(folders));
    EXPECT_EQ(foundFiles.size(), folders.size());
    EXPECT_EQ(removeTree(dir.path()), static_cast<int>(2 * folders.size() + 2));
}

/// Swaps a folder for a link to the outside and back, as fast as it goes.
class Swapper
{
public:
    Swapper(const std::string& victim, const std::string& outside)
        : mThread([this, victim, outside] { run(victim, outside); })
    {
    }
    ~Swapper()
    {
        mStop = true;
        mThread.join();
    }

    std::atomic<int> swaps{0};

private:
    void run(const std::string& victim, const std::string& outside)
    {
        while (!mStop)
        {
            rename(victim.c_str(), (victim + "-kept").c_str());
            static_cast<void>(symlink(outside.c_str(), victim.c_str()) == 0 && ++swaps);
            unlink(victim.c_str());
            rename((victim + "-kept").c_str(), victim.c_str());
        }
    }

    std::atomic<bool> mStop{false};
    std::thread mThread;
};

TEST(WalkFaults, NothingBehindALinkThatTakesAFoldersPlace)
{
    const TempDir dir;
    makeFolder(dir.file("outside/secret"));
    writeFile(dir.file("outside/sentinel"), "");
    makeFolder(dir.file("tree/victim/inner"));
    writeFile(dir.file("tree/victim/file"), "");
    const int wanted = ky::test::isSoak() ? 50000 : 3000;
    Swapper swapper(dir.file("tree/victim"), dir.file("outside"));
    int entered = 0;
    std::uint64_t walks = 0;
    std::uint64_t outside = 0;
    while (swapper.swaps < wanted)
    {
        Counter counter;
        counter.visit(dir.file("tree"), true, nullptr, false);
        outside += counter.files.count("sentinel");
        entered += counter.files.count("file") > 0;
        ++walks;
    }
    EXPECT_GT(entered, 0);
    ky::test::account("files and folders", {walks, "walks"}, {swapper.swaps.load(), "folders swapped for a link"},
                      {outside, "walks led outside"});
}

/// Moves a folder above the current one away, in the depth where it has been suspended.
class Mover : public Counter
{
public:
    Mover(std::string from, std::string to) : mFrom(std::move(from)), mTo(std::move(to)) {}

    bool onEnterFolder(const std::string& folder) override
    {
        const bool isMoved = entered != 150 || rename(mFrom.c_str(), mTo.c_str()) == 0;
        return isMoved && Counter::onEnterFolder(folder);
    }

private:
    std::string mFrom;
    std::string mTo;
};

TEST(WalkFaults, AFolderAboveMayBeMovedAway)
{
    const TempDir dir;
    makeFolder(dir.file("tree"));
    ASSERT_NO_FATAL_FAILURE(makeChain(dir.file("tree"), 200, ""));
    // Comes behind the chain's folder or before it: listed either way.
    makeFolder(dir.file("tree/other"));
    Mover mover(dir.file("tree/d0"), dir.file("elsewhere"));
    EXPECT_TRUE(mover.visit(dir.file("tree"), true, nullptr, false));
    EXPECT_EQ(mover.entered, 202);
    EXPECT_EQ(mover.left, 202);
    EXPECT_EQ(mover.files.size(), 200u);
}

} // namespace
