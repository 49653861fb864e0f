// SPDX-License-Identifier: MIT
#include "diagnostics/fork_while_logging.h"
#include "support/sanitizer.h"

#include <ky/kyLog.h>
#include <ky/kyResource.h>
#include <ky/kySystem.h>

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <thread>
#include <vector>

namespace
{

using ky::InitType;
using ky::kyLog;
using ky::rc::GetResource;
using ky::rc::impl::EmbeddedResource;
using ky::rc::impl::EmbeddedResources;

using Texts = std::vector<std::string>;

void collect(const std::string& message, ky::kyLogType type, const std::string&, void* texts)
{
    EXPECT_EQ(type, ky::kyLogType::CRITICAL);
    static_cast<Texts*>(texts)->push_back(message);
}

/// The library, its messages collected.
class Library
{
public:
    explicit Library(InitType type)
    {
        ky::initializeKySystem(type, false);
        kyLog::edit().setEchoToConsole(false);
        kyLog::edit().installCustomHandler(&collect, &mTexts);
    }
    ~Library() { ky::terminateKySystem(); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    Texts takeMessages() { return std::exchange(mTexts, {}); }

private:
    Texts mTexts;
};

const char bytes[] = "first\0second\xFF\nthird";

void registerBlocks(const std::vector<const char*>& names, const std::vector<unsigned long long>& offsets,
                    const std::vector<unsigned long long>& sizes)
{
    ky::rc::impl::RegisterResources(names.size(), bytes, names.data(), offsets.data(), sizes.data());
}

void unregister(const std::vector<const char*>& names)
{
    ky::rc::impl::UnRegisterResources(names.size(), nullptr, names.data(), nullptr, nullptr);
}

/// The bytes, after both forms of the look-up have agreed; nothing when there are none.
std::optional<std::string> find(const char* name)
{
    std::string copy = "left over";
    const char* data = bytes;
    unsigned long long size = 99;
    const bool found = GetResource(name, data, size);
    EXPECT_EQ(GetResource(name, copy), found);
    EXPECT_EQ(copy, std::string(data != nullptr ? data : "", static_cast<std::size_t>(size)));
    EXPECT_EQ(data != nullptr, found);
    return found ? std::optional(copy) : std::nullopt;
}

TEST(Resources, AreFoundUntilUnregistered)
{
    for (const InitType type : {InitType::Light, InitType::Full})
    {
        Library library(type);
        registerBlocks({"b", "B", "b/c", "", "\xC3\xA4"}, {0, 6, 0, 14, 21}, {5, 8, 0, 5, 0});
        EXPECT_EQ(find("b"), "first");
        EXPECT_EQ(find("B"), std::string("second\xFF\n"));
        EXPECT_EQ(find("b/c"), "");
        EXPECT_EQ(find(""), "third");
        EXPECT_EQ(find("\xC3\xA4"), "");
        EXPECT_EQ(library.takeMessages(), Texts());

        registerBlocks({"new", "b", "b", "last"}, {0, 1, 2, 3}, {1, 1, 1, 1});
        EXPECT_EQ(find("b"), "first") << "the first one is kept";
        EXPECT_EQ(find("last"), "s") << "those behind a conflict are registered";
        EXPECT_EQ(library.takeMessages(), (Texts{"Resource conflict b", "Resource conflict b"}));

        registerBlocks({}, {}, {});
        unregister({});
        unregister({"b", "c", "b", "B"});
        EXPECT_EQ(library.takeMessages(),
                  (Texts{"Resource is already unregistered c", "Resource is already unregistered b"}));
        EXPECT_EQ(find("b"), std::nullopt);
        EXPECT_EQ(find("B"), std::nullopt);
        EXPECT_EQ(find("b/c"), "");
        EXPECT_EQ(library.takeMessages(), (Texts{"Resource is missing b", "Resource is missing b",
                                                 "Resource is missing B", "Resource is missing B"}));
    }
}

TEST(Resources, ANullNameIsAName)
{
    Library library(InitType::Full);
    EXPECT_EQ(find(nullptr), std::nullopt);
    unregister({nullptr});
    registerBlocks({nullptr, "", nullptr}, {0, 6, 6}, {5, 6, 6});
    EXPECT_EQ(find(nullptr), "first");
    EXPECT_EQ(find(""), "second");
    EXPECT_EQ(library.takeMessages(),
              (Texts{"Resource is missing [NullPtr]", "Resource is missing [NullPtr]",
                     "Resource is already unregistered [NullPtr]", "Resource conflict [NullPtr]"}));
    unregister({nullptr});
    EXPECT_EQ(find(""), "second");
}

TEST(Resources, WithoutTheLibraryNothingIsThere)
{
    registerBlocks({"early"}, {0}, {5});
    unregister({"early", "other"});
    testing::internal::CaptureStdout();
    EXPECT_EQ(find("early"), std::nullopt);
    EXPECT_NE(testing::internal::GetCapturedStdout().find("Resource is missing early"), std::string::npos);
    Library library(InitType::Light);
    EXPECT_EQ(find("early"), std::nullopt);
}

TEST(Resources, ATerminationEndsThem)
{
    {
        Library library(InitType::Light);
        registerBlocks({"a"}, {0}, {5});
        ky::initializeKySystem(InitType::Full, false);
        EXPECT_EQ(find("a"), "first") << "the lock changes nothing";
        ky::terminateKySystem();
    }
    Library library(InitType::Full);
    EXPECT_EQ(find("a"), std::nullopt);
}

TEST(EmbeddedResources, AreThereWheneverTheTableIs)
{
    const EmbeddedResource first[] = {{"x", bytes, bytes + 5}, {"y", bytes + 6, bytes + 12}};
    const EmbeddedResource second[] = {{"x", bytes + 6, bytes + 12}, {"z", bytes + 14, bytes + 19}};
    std::optional<EmbeddedResources> before(std::in_place, first, 2);
    for (int round = 0; round < 3; ++round)
    {
        Library library(round == 0 ? InitType::Light : InitType::Full);
        EXPECT_EQ(find("x"), "first");
        {
            const EmbeddedResources later(second, 2);
            EXPECT_EQ(library.takeMessages(), Texts{"Resource conflict x"});
            EXPECT_EQ(find("x"), "first");
            EXPECT_EQ(find("z"), "third");
        }
        EXPECT_EQ(find("x"), "first") << "not taken out by the loser of a conflict";
        EXPECT_EQ(library.takeMessages(), Texts());
        EXPECT_EQ(find("z"), std::nullopt);
        library.takeMessages();
        if (round == 2)
            unregister({"y"});
        before.reset();
        EXPECT_EQ(library.takeMessages(), Texts());
        EXPECT_EQ(find("x"), std::nullopt);
        before.emplace(first, 2);
        EXPECT_EQ(find("y"), "second");
    }
    // Of two that wait for the table, the first one wins.
    const EmbeddedResources later(second, 2);
    Library library(InitType::Full);
    EXPECT_EQ(find("x"), "first");
    EXPECT_EQ(find("z"), "third");
}

TEST(EmbeddedResources, OfThisProgramAreFilesOfThisFolder)
{
    Library library(InitType::Light);
    const std::optional<std::string> text = find("frame/CMakeLists.txt");
    ASSERT_TRUE(text.has_value());
    EXPECT_NE(text->find("ky_add_resources(frame_test frame"), std::string::npos);
    EXPECT_EQ(find("array/CMakeLists.txt"), text);
    EXPECT_EQ(find("frame/empty.txt"), "");
    EXPECT_EQ(find("array/empty.txt"), "");
    EXPECT_EQ(library.takeMessages(), Texts());
}

void lookUp(const std::string&, ky::kyLogType, const std::string&, void* found)
{
    const char* data = nullptr;
    unsigned long long size = 0;
    if (GetResource("frame/CMakeLists.txt", data, size))
        ++*static_cast<int*>(found);
}

/// Threads that register, find and unregister, with conflicts, until the object ends.
class BusyThreads
{
public:
    explicit BusyThreads(int count)
    {
        for (int t = 0; t < count; ++t)
            mThreads.emplace_back([this, t] { work("own " + std::to_string(t)); });
    }
    ~BusyThreads()
    {
        mStop = true;
        for (std::thread& thread : mThreads)
            thread.join();
    }

    int rounds() const { return mRounds; }

private:
    void work(const std::string& own)
    {
        const EmbeddedResource entry[] = {{own.c_str(), bytes, bytes + 5}};
        for (; !mStop; ++mRounds)
        {
            const EmbeddedResources module(entry, 1);
            std::string text;
            EXPECT_TRUE(GetResource(own.c_str(), text));
            EXPECT_EQ(text, "first");
            registerBlocks({own.c_str(), "shared"}, {6, 0}, {6, 5});
            unregister({"shared"});
        }
    }

    std::atomic<bool> mStop{false};
    std::atomic<int> mRounds{0};
    std::vector<std::thread> mThreads;
};

TEST(Resources, ThreadsShareTheTableAndALogHandlerMayUseIt)
{
    Library library(InitType::Full);
    int found = 0;
    kyLog::edit().installCustomHandler(&lookUp, &found);
    {
        const BusyThreads threads(4);
        while (threads.rounds() < 2000)
            std::this_thread::yield();
    }
    // One conflict a round at the least.
    EXPECT_GE(found, 2000);
    kyLog::edit().installCustomHandler(nullptr, nullptr);
}

TEST(Resources, AForkedChildFindsThem)
{
    if (!ky::test::canFork())
        GTEST_SKIP() << "no fork here";
    Library library(InitType::Full);
    kyLog::edit().installCustomHandler(nullptr, nullptr);
    const BusyThreads threads(2);
    for (int f = 0; f < 60; ++f)
    {
        const auto useTable = []
        {
            const EmbeddedResource entry[] = {{"child", bytes, bytes + 5}};
            const EmbeddedResources module(entry, 1);
            std::string text;
            if (!GetResource("frame/CMakeLists.txt", text) || !GetResource("child", text))
                std::_Exit(1);
        };
        ASSERT_TRUE(ky::test::forkAndRun(useTable)) << "child " << f;
    }
}

TEST(Lifecycle, AForkedChildMayTerminateAndInitializeAgain)
{
    if (!ky::test::canFork() || !ky::test::canStartThreadsAfterFork)
        GTEST_SKIP() << "no fork here, or no threads behind it";
    Library library(InitType::Full);
    kyLog::edit().installCustomHandler(nullptr, nullptr);
    const BusyThreads threads(2);
    const auto liveAgain = []
    {
        ky::terminateKySystem();
        ky::initializeKySystem(InitType::Full, false);
        kyLog::edit().setEchoToConsole(false);
        std::string text;
        if (!GetResource("frame/CMakeLists.txt", text) || !ky::IsKySystemThreadSafe())
            std::_Exit(1);
        ky::terminateKySystem();
    };
    for (int f = 0; f < 20; ++f)
        ASSERT_TRUE(ky::test::forkAndRun(liveAgain)) << "child " << f;
}

} // namespace
