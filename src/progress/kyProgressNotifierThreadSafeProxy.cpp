// SPDX-License-Identifier: MIT
#include <ky/kyProgressNotifier.h>

namespace ky
{

kyProgressNotifierThreadSafeProxy::kyProgressNotifierThreadSafeProxy(kyProgressNotifierInterface* target)
    : mTarget(target)
{
}

kyProgressNotifierThreadSafeProxy::~kyProgressNotifierThreadSafeProxy() = default;

void kyProgressNotifierThreadSafeProxy::resetNotifier()
{
    const kyMutexLocker locker(mMutex);
    mTarget->resetNotifier();
}

bool kyProgressNotifierThreadSafeProxy::shouldCancel() const { return mTarget->shouldCancel(); }

void kyProgressNotifierThreadSafeProxy::setInternalCancelFlag(bool cancel)
{
    const kyMutexLocker locker(mMutex);
    mTarget->setInternalCancelFlag(cancel);
}

void kyProgressNotifierThreadSafeProxy::beginStepGroupWeights(const std::vector<double>& weights, double firstStepMax,
                                                              kyProgressNotifierGroupCloser* closer)
{
    /// The target makes the closer hold the target itself, at its place in the order of steps; also when the hook
    /// throws afterwards, the group must not be ended past the mutex.
    struct Redirect
    {
        ~Redirect()
        {
            if (closer != nullptr && closer->mNotifier == target)
                closer->mNotifier = proxy;
        }
        kyProgressNotifierGroupCloser* closer;
        kyProgressNotifierInterface* target;
        kyProgressNotifierInterface* proxy;
    };
    const kyMutexLocker locker(mMutex);
    const Redirect redirect{closer, mTarget, this};
    mTarget->beginStepGroupWeights(weights, firstStepMax, closer);
}

void kyProgressNotifierThreadSafeProxy::endStepGroup()
{
    const kyMutexLocker locker(mMutex);
    mTarget->endStepGroup();
}

void kyProgressNotifierThreadSafeProxy::changeCurrentStep(double stepMax, std::size_t stepIndex)
{
    const kyMutexLocker locker(mMutex);
    mTarget->changeCurrentStep(stepMax, stepIndex);
}

void kyProgressNotifierThreadSafeProxy::setCurrentStepMaxProgress(double max)
{
    const kyMutexLocker locker(mMutex);
    mTarget->setCurrentStepMaxProgress(max);
}

void kyProgressNotifierThreadSafeProxy::getCurrentStepProgress(double& progress, double& max)
{
    const kyMutexLocker locker(mMutex);
    mTarget->getCurrentStepProgress(progress, max);
}

void kyProgressNotifierThreadSafeProxy::setCurrentStepProgress(double progress)
{
    const kyMutexLocker locker(mMutex);
    mTarget->setCurrentStepProgress(progress);
}

void kyProgressNotifierThreadSafeProxy::incrementCurrentStepProgress(double increment)
{
    const kyMutexLocker locker(mMutex);
    mTarget->incrementCurrentStepProgress(increment);
}

float kyProgressNotifierThreadSafeProxy::getGlobalProgress() const
{
    const kyMutexLocker locker(mMutex);
    return mTarget->getGlobalProgress();
}

} // namespace ky
