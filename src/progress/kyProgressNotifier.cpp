// SPDX-License-Identifier: MIT
#include <ky/kyProgressNotifier.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <utility>

namespace ky
{

// The progress is whatever the arithmetic gives, so it must be the one where a division by 0 has a result.
static_assert(std::numeric_limits<double>::is_iec559 && std::numeric_limits<float>::is_iec559);

namespace
{

double usableMax(double max) { return max <= 0.0 ? 1.0 : max; }

/// The caller's flag as other threads may be writing it.
bool readFlag(const bool* flag)
{
    // Only read: the type asks for an object that is not const.
    return std::atomic_ref<bool>(const_cast<bool&>(*flag)).load(std::memory_order_relaxed);
}

} // namespace

kyProgressNotifierInterface::~kyProgressNotifierInterface() = default;

void kyProgressNotifierInterface::beginStepGroup(int stepCount, double firstStepMax,
                                                 kyProgressNotifierGroupCloser* closer)
{
    const std::vector<double> weights(static_cast<std::size_t>(std::max(stepCount, 0)), 1.0);
    beginStepGroupWeights(weights, firstStepMax, closer);
}

kyProgressNotifier::kyProgressNotifier(const bool* externalCancel, const kyProgressNotifierInterface* parent)
    : mExternalCancel(externalCancel == nullptr ? &mNeverCancelled : externalCancel),
      mParent(parent)
{
    kyProgressNotifier::resetNotifier();
}

kyProgressNotifier::~kyProgressNotifier() = default;

void kyProgressNotifier::resetNotifier()
{
    mGroups.clear();
    mGlobalProgress = -1.0F; // unlike any progress at the start of a group: the change is always reported
    beginStepGroup(1, 1.0, nullptr);
    mInternalCancel.store(false, std::memory_order_relaxed);
}

bool kyProgressNotifier::shouldCancel() const
{
    return mInternalCancel.load(std::memory_order_relaxed) || readFlag(mExternalCancel) ||
           (mParent != nullptr && mParent->shouldCancel());
}

void kyProgressNotifier::setInternalCancelFlag(bool cancel)
{
    mInternalCancel.store(cancel, std::memory_order_relaxed);
}

void kyProgressNotifier::beginStepGroupWeights(const std::vector<double>& weights, double firstStepMax,
                                               kyProgressNotifierGroupCloser* closer)
{
    StepGroup group;
    double sum = 0.0;
    for (const double weight : weights)
        sum += weight;
    if (sum > 0.0 && weights.size() > 1)
    {
        group.scale.reserve(weights.size());
        group.offset.reserve(weights.size());
        double before = 0.0;
        for (const double weight : weights)
        {
            group.offset.push_back(before);
            group.scale.push_back(weight / sum);
            before += group.scale.back();
        }
    }
    else
    {
        group.scale.assign(1, 1.0);
        group.offset.assign(1, 0.0);
    }
    group.stepMax = usableMax(firstStepMax);
    mGroups.push_back(std::move(group));
    if (closer != nullptr)
        closer->setNotifier(this);
    updateGlobalProgress();
}

void kyProgressNotifier::endStepGroup()
{
    if (mGroups.empty())
        return;
    mGroups.pop_back();
    if (!mGroups.empty())
        mGroups.back().stepProgress = mGroups.back().stepMax;
    updateGlobalProgress();
}

void kyProgressNotifier::changeCurrentStep(double stepMax, std::size_t stepIndex)
{
    if (mGroups.empty())
        return;
    StepGroup& group = mGroups.back();
    group.stepMax = usableMax(stepMax);
    group.stepProgress = 0.0;
    group.currentStep = std::min(stepIndex, group.scale.size() - 1);
    updateGlobalProgress();
}

void kyProgressNotifier::setCurrentStepMaxProgress(double max)
{
    if (mGroups.empty())
        return;
    mGroups.back().stepMax = usableMax(max);
    mGroups.back().stepProgress = 0.0;
    updateGlobalProgress();
}

void kyProgressNotifier::getCurrentStepProgress(double& progress, double& max)
{
    if (mGroups.empty())
        return;
    progress = mGroups.back().stepProgress;
    max = mGroups.back().stepMax;
}

void kyProgressNotifier::setCurrentStepProgress(double progress)
{
    if (mGroups.empty())
        return;
    mGroups.back().stepProgress = std::min(progress, mGroups.back().stepMax);
    updateGlobalProgress();
}

void kyProgressNotifier::incrementCurrentStepProgress(double increment)
{
    if (mGroups.empty())
        return;
    StepGroup& group = mGroups.back();
    // In this order of arguments a sum that is not a number gives 0.
    group.stepProgress = std::max(0.0, std::min(group.stepProgress + increment, group.stepMax));
    updateGlobalProgress();
}

float kyProgressNotifier::getGlobalProgress() const { return mGlobalProgress; }

void kyProgressNotifier::onProgressChanged(float) {}

double kyProgressNotifier::foldGroups() const
{
    if (mGroups.empty())
        return 1.0;
    double progress = mGroups.back().stepProgress / mGroups.back().stepMax;
    for (auto group = mGroups.rbegin(); group != mGroups.rend(); ++group)
        progress = progress * group->scale[group->currentStep] + group->offset[group->currentStep];
    return progress;
}

void kyProgressNotifier::updateGlobalProgress()
{
    const double progress = foldGroups();
    if (progress == static_cast<double>(mGlobalProgress))
        return;
    mGlobalProgress = static_cast<float>(progress);
    onProgressChanged(mGlobalProgress);
}

kyProgressNotifierGroupCloser::~kyProgressNotifierGroupCloser()
{
    try
    {
        forgiveNotifier(true);
    }
    catch (...)
    {
        // The group is ended; a destructor has nobody to tell what the view of the progress threw.
    }
}

void kyProgressNotifierGroupCloser::setNotifier(kyProgressNotifierInterface* notifier)
{
    // Held first: when the end of the old group throws, the new one still has its closer.
    kyProgressNotifierInterface* const old = std::exchange(mNotifier, notifier);
    if (old != nullptr)
        old->endStepGroup();
}

void kyProgressNotifierGroupCloser::forgiveNotifier(bool endGroup)
{
    kyProgressNotifierInterface* const old = std::exchange(mNotifier, nullptr);
    if (endGroup && old != nullptr)
        old->endStepGroup();
}

void kyProgressMonitorable::setProgressValue(float value)
{
    if (mNotifier != nullptr)
        mNotifier->setCurrentStepProgress(static_cast<double>(value));
}

void kyProgressMonitorable::resetProgressValue()
{
    if (mNotifier != nullptr)
        mNotifier->resetNotifier();
}

} // namespace ky
