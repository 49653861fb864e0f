// SPDX-License-Identifier: MIT
#include "concurrency/full_library.h"
#include "concurrency/threads.h"
#include "progress/recording_notifier.h"
#include "support/soak.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <memory>
#include <stdexcept>

namespace
{

const auto* const sLibrary = testing::AddGlobalTestEnvironment(new ky::test::FullLibrary);

using Proxy = ky::kyProgressNotifierThreadSafeProxy;
using ky::test::RecordingNotifier;
using ky::test::Threads;

constexpr int threadCount = 16;

TEST(Proxy, ManyThreadsReachExactlyOne)
{
    const int updates = ky::test::isSoak() ? 312'500 : 2000;
    for (const bool cancelled : {false, true})
    {
        RecordingNotifier target;
        Proxy proxy(&target);
        std::atomic<bool> seen{false};
        proxy.beginStepGroupWeights({1.0, 3.0}, 1.0, nullptr);
        proxy.changeCurrentStep(threadCount * updates, 1);
        const auto update = [&](int thread)
        {
            for (int i = 0; i < updates; ++i)
            {
                proxy.incrementCurrentStepProgress(1.0);
                if (cancelled && thread == 0 && i == updates / 2)
                    proxy.cancelJob();
                if (proxy.shouldCancel())
                    seen = true;
            }
        };
        Threads(threadCount, update).join();
        EXPECT_EQ(seen, cancelled);
        EXPECT_EQ(proxy.getGlobalProgress(), 1.0F);
        const std::vector<float> values = target.take();
        EXPECT_TRUE(std::is_sorted(values.begin(), values.end()));
        // One for every update, and those of the group's begin and change.
        const auto wanted = static_cast<std::size_t>(threadCount * updates);
        ky::test::account("progress", {wanted, "updates of 16 threads"}, {},
                          {wanted - std::min(wanted, values.size()), "reports"});
    }
}

TEST(Proxy, ThreadsMayNestGroupsAndCancelWhileOthersAsk)
{
    ky::kyProgressNotifier parent;
    RecordingNotifier target(nullptr, &parent);
    Proxy proxy(&target);
    const auto use = [&](int thread)
    {
        double progress = 0.0;
        double max = 1.0;
        for (int i = 0; i < 200; ++i)
        {
            ky::kyProgressNotifierGroupCloser closer;
            proxy.beginStepGroup(1 + i % 4, 2.0, &closer);
            proxy.changeCurrentStep(2.0, static_cast<std::size_t>(i % 3));
            proxy.setCurrentStepMaxProgress(3.0);
            proxy.setCurrentStepProgress(1.5);
            proxy.getCurrentStepProgress(progress, max);
            proxy.setInternalCancelFlag(i % 2 == 0);
            (thread % 2 == 0 ? parent : target).setInternalCancelFlag(i % 3 == 0); // past the mutex
            static_cast<void>(proxy.shouldCancel());
            if (thread == 0 && i % 50 == 49)
                proxy.resetNotifier();
        }
    };
    Threads(threadCount, use).join();
    proxy.resetNotifier();
    proxy.endStepGroup();
    EXPECT_EQ(proxy.getGlobalProgress(), 1.0F);
}

TEST(Proxy, RunsTheHookAloneAndAnswersShouldCancelMeanwhile)
{
    RecordingNotifier target;
    Proxy proxy(&target);
    std::atomic<int> inside{0};
    std::atomic<int> together{0};
    target.onChange = [&](float)
    {
        if (++inside > 1)
            ++together;
        std::async(std::launch::async, [&] { return proxy.shouldCancel(); }).get(); // hangs if it takes the mutex
        --inside;
    };
    const auto update = [&](int)
    {
        for (int i = 0; i < 20; ++i)
            proxy.incrementCurrentStepProgress(0.001);
    };
    Threads(threadCount, update).join();
    EXPECT_EQ(together, 0);
}

/// Tells which way a group was ended.
class CountingProxy : public Proxy
{
public:
    using Proxy::Proxy;
    void endStepGroup() override
    {
        ++ended;
        Proxy::endStepGroup();
    }
    int ended = 0;
};

TEST(Proxy, AGroupBegunThroughItIsEndedThroughIt)
{
    RecordingNotifier target;
    CountingProxy inner(&target);
    CountingProxy outer(&inner);
    {
        ky::kyProgressNotifierGroupCloser closer;
        outer.beginStepGroup(2, 1.0, &closer);
    }
    EXPECT_EQ(outer.ended, 1);
    EXPECT_EQ(inner.ended, 1);
    EXPECT_EQ(target.getGlobalProgress(), 1.0F);

    outer.resetNotifier();
    outer.setCurrentStepProgress(0.5);
    target.onChange = [](float) { throw std::runtime_error("view closed"); };
    {
        ky::kyProgressNotifierGroupCloser closer;
        EXPECT_THROW(outer.beginStepGroup(2, 1.0, &closer), std::runtime_error);
    }
    EXPECT_EQ(outer.ended, 2) << "also when the hook threw";
    target.onChange = nullptr;
    EXPECT_EQ(std::async(std::launch::async, [&] { return outer.getGlobalProgress(); }).get(), 1.0F)
        << "the mutex is free";
}

} // namespace
