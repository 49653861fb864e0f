// SPDX-License-Identifier: MIT
#include "progress/recording_notifier.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <type_traits>

namespace
{

using ky::kyProgressNotifier;
using ky::kyProgressNotifierGroupCloser;
using ky::test::RecordingNotifier;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(std::is_abstract_v<ky::kyProgressNotifierInterface>);
static_assert(!std::is_copy_constructible_v<kyProgressNotifier> && !std::is_copy_assignable_v<kyProgressNotifier>);
static_assert(!std::is_copy_constructible_v<kyProgressNotifierGroupCloser>);

TEST(Notifier, FoldsNestedGroups)
{
    RecordingNotifier notifier;
    EXPECT_EQ(notifier.getGlobalProgress(), 0.0F);
    notifier.beginStepGroup(4, 10.0, nullptr);
    notifier.setCurrentStepProgress(5.0);
    notifier.changeCurrentStep(10.0, 2);
    notifier.beginStepGroupWeights({1.0, 3.0}, 8.0, nullptr);
    notifier.setCurrentStepProgress(8.0);
    notifier.changeCurrentStep(2.0, 1);
    notifier.incrementCurrentStepProgress(1.0);
    notifier.endStepGroup(); // completes step 2
    notifier.endStepGroup(); // completes the outer single step
    EXPECT_THAT(notifier.take(), ElementsAre(0.125F, 0.5F, 0.5625F, 0.65625F, 0.75F, 1.0F));
    EXPECT_EQ(notifier.getGlobalProgress(), 1.0F);
}

TEST(Notifier, WithoutAGroupOnlyABeginDoesAnything)
{
    RecordingNotifier notifier;
    notifier.endStepGroup();
    EXPECT_THAT(notifier.take(), ElementsAre(1.0F));
    double progress = 7.0;
    double max = 8.0;
    notifier.endStepGroup();
    notifier.changeCurrentStep(2.0, 0);
    notifier.setCurrentStepMaxProgress(2.0);
    notifier.setCurrentStepProgress(0.5);
    notifier.incrementCurrentStepProgress(0.5);
    notifier.getCurrentStepProgress(progress, max);
    EXPECT_EQ(progress, 7.0);
    EXPECT_EQ(max, 8.0);
    EXPECT_EQ(notifier.getGlobalProgress(), 1.0F);
    EXPECT_THAT(notifier.take(), IsEmpty());
    notifier.beginStepGroup(2);
    EXPECT_THAT(notifier.take(), ElementsAre(0.0F));
}

TEST(Notifier, KeepsStepsAndProgressInTheirBounds)
{
    kyProgressNotifier notifier;
    double progress = 0.0;
    double max = 0.0;
    notifier.beginStepGroup(3, 10.0);
    notifier.setCurrentStepProgress(-5.0);
    notifier.getCurrentStepProgress(progress, max);
    EXPECT_EQ(progress, -5.0);
    EXPECT_EQ(max, 10.0);
    notifier.incrementCurrentStepProgress(-5.0);
    EXPECT_EQ(notifier.getGlobalProgress(), 0.0F);
    notifier.setCurrentStepProgress(11.0);
    EXPECT_FLOAT_EQ(notifier.getGlobalProgress(), 1.0F / 3);
    notifier.changeCurrentStep(1.0, 99);
    EXPECT_FLOAT_EQ(notifier.getGlobalProgress(), 2.0F / 3);
}

TEST(Notifier, ReportsAChangeUnlessItEqualsTheStoredNumber)
{
    RecordingNotifier notifier;
    notifier.setCurrentStepProgress(0.5);
    notifier.setCurrentStepProgress(0.5);
    EXPECT_THAT(notifier.take(), ElementsAre(0.5F));
    // 0.1 has no exact float: the stored number never equals it.
    notifier.setCurrentStepProgress(0.1);
    notifier.setCurrentStepProgress(0.1);
    EXPECT_THAT(notifier.take(), ElementsAre(0.1F, 0.1F));
    double ignored = 0.0;
    notifier.getCurrentStepProgress(ignored, ignored);
    notifier.cancelJob();
    EXPECT_THAT(notifier.take(), IsEmpty()) << "neither a question nor a cancellation is a change";
}

TEST(Notifier, CancelsByItselfByTheFlagAndByTheParent)
{
    bool flag = false;
    kyProgressNotifier parent;
    RecordingNotifier notifier(&flag, &parent);
    EXPECT_FALSE(notifier.shouldCancel());
    flag = true;
    EXPECT_TRUE(notifier.shouldCancel());
    flag = false;
    parent.cancelJob();
    EXPECT_TRUE(notifier.shouldCancel());
    parent.enableJob();
    EXPECT_FALSE(notifier.shouldCancel());
    notifier.cancelJob();
    EXPECT_TRUE(notifier.shouldCancel());
    EXPECT_FALSE(parent.shouldCancel());

    notifier.beginStepGroup(5);
    notifier.setCurrentStepProgress(0.0);
    notifier.take();
    notifier.resetNotifier();
    EXPECT_FALSE(notifier.shouldCancel());
    EXPECT_THAT(notifier.take(), ElementsAre(0.0F)) << "reported although it was 0 before";
    notifier.endStepGroup();
    EXPECT_THAT(notifier.take(), ElementsAre(1.0F)) << "no group of the time before is left";
}

TEST(Closer, EndsItsGroupOnceInEveryWay)
{
    kyProgressNotifier notifier;
    kyProgressNotifier other;
    {
        kyProgressNotifierGroupCloser closer;
        notifier.beginStepGroup(4, 1.0, &closer);
        EXPECT_EQ(notifier.getGlobalProgress(), 0.0F);
    }
    EXPECT_EQ(notifier.getGlobalProgress(), 1.0F);

    notifier.resetNotifier();
    other.resetNotifier();
    {
        kyProgressNotifierGroupCloser closer;
        notifier.beginStepGroup(4, 1.0, &closer);
        other.beginStepGroup(4, 1.0, &closer);
        EXPECT_EQ(notifier.getGlobalProgress(), 1.0F) << "its group was ended for the other one's";
        closer.forgiveNotifier(false);
    }
    EXPECT_EQ(other.getGlobalProgress(), 0.0F);
    {
        kyProgressNotifierGroupCloser closer;
        closer.setNotifier(&other);
        closer.forgiveNotifier(true);
        EXPECT_EQ(other.getGlobalProgress(), 1.0F);
        other.resetNotifier();
        closer.forgiveNotifier(true);
        closer.setNotifier(nullptr);
    }
    EXPECT_EQ(other.getGlobalProgress(), 0.0F) << "the closer held nothing any more";
}

TEST(Closer, SetOnTheNotifierItHoldsEndsTheNewGroup)
{
    kyProgressNotifier target;
    ky::kyProgressNotifierThreadSafeProxy proxy(&target);
    for (ky::kyProgressNotifierInterface* const notifier : {static_cast<ky::kyProgressNotifierInterface*>(&target),
                                                            static_cast<ky::kyProgressNotifierInterface*>(&proxy)})
    {
        notifier->resetNotifier();
        kyProgressNotifierGroupCloser closer;
        notifier->beginStepGroup(2, 1.0, &closer);
        notifier->beginStepGroup(4, 1.0, &closer);
        EXPECT_EQ(notifier->getGlobalProgress(), 0.5F) << "step 0 of the first group is complete";
        notifier->setCurrentStepProgress(0.5);
        EXPECT_EQ(notifier->getGlobalProgress(), 0.25F) << "and the first group is the innermost one";
    }
    EXPECT_EQ(target.getGlobalProgress(), 1.0F);
}

TEST(Closer, AfterAResetEndsAGroupOfTheNewRun)
{
    kyProgressNotifier notifier;
    {
        kyProgressNotifierGroupCloser outer;
        kyProgressNotifierGroupCloser inner;
        notifier.beginStepGroup(2, 1.0, &outer);
        notifier.beginStepGroup(2, 1.0, &inner);
        notifier.resetNotifier();
    }
    EXPECT_EQ(notifier.getGlobalProgress(), 1.0F);
    notifier.beginStepGroup(2);
    notifier.changeCurrentStep(1.0, 1);
    EXPECT_EQ(notifier.getGlobalProgress(), 0.5F);
}

TEST(Hook, MayThrowWithoutHarm)
{
    RecordingNotifier notifier;
    notifier.beginStepGroup(2);
    notifier.onChange = [](float) { throw std::runtime_error("view closed"); };
    EXPECT_THROW(notifier.changeCurrentStep(1.0, 1), std::runtime_error);
    EXPECT_EQ(notifier.getGlobalProgress(), 0.5F) << "the change was made";
    {
        kyProgressNotifierGroupCloser closer;
        EXPECT_NO_THROW(notifier.beginStepGroup(4, 1.0, &closer)) << "no change, no call";
        EXPECT_THROW(notifier.changeCurrentStep(1.0, 2), std::runtime_error);
    }
    EXPECT_EQ(notifier.getGlobalProgress(), 1.0F) << "the closer has ended its group";
    EXPECT_THROW(notifier.resetNotifier(), std::runtime_error);
    notifier.onChange = nullptr;
    notifier.setCurrentStepProgress(0.25);
    EXPECT_EQ(notifier.getGlobalProgress(), 0.25F);
}

TEST(Hook, MayUseTheNotifier)
{
    RecordingNotifier notifier;
    notifier.onChange = [&](float value)
    {
        if (value >= 0.5F)
            notifier.cancelJob();
        if (value == 0.25F)
            notifier.setCurrentStepProgress(0.75);
    };
    notifier.setCurrentStepProgress(0.25);
    EXPECT_THAT(notifier.take(), ElementsAre(0.25F, 0.75F));
    EXPECT_TRUE(notifier.shouldCancel());
}

TEST(Monitorable, PassesOnToItsNotifier)
{
    ky::kyProgressMonitorable object;
    object.setProgressValue(0.5F);
    object.resetProgressValue();
    RecordingNotifier notifier;
    object.setProgressNotifier(&notifier);
    object.setProgressValue(0.5F);
    object.resetProgressValue();
    object.setProgressNotifier(nullptr);
    object.setProgressValue(0.75F);
    EXPECT_THAT(notifier.take(), ElementsAre(0.5F, 0.0F));
}

} // namespace
