// SPDX-License-Identifier: MIT
#include <ky/kyWaitCondition.h>

#include "concurrency/wait_condition_private.h"
#include "frame/early_use.h"

#include <ky/kyMutex.h>

#include <atomic>

namespace ky
{

namespace
{

std::atomic<impl::WaitConditionFactory> sFactory{&impl::makeEventWaitCondition};

} // namespace

namespace impl
{

void setWaitConditionFactory(WaitConditionFactory factory) noexcept { sFactory = factory; }

WaitConditionFactory waitConditionFactory() noexcept { return sFactory; }

} // namespace impl

kyWaitCondition::kyWaitCondition() : mImplementation(impl::waitConditionFactory()())
{
    impl::checkEarlyUse("WaitCondition created before full init of kySystem");
}

kyWaitCondition::~kyWaitCondition() { delete mImplementation; }

bool kyWaitCondition::wait(kyMutex* m, unsigned long timeoutMs)
{
    return mImplementation->wait(*static_cast<impl::native::RecursiveLock*>(m->getMutexData()), timeoutMs);
}

void kyWaitCondition::wakeOne() { mImplementation->wakeOne(); }

void kyWaitCondition::wakeAll() { mImplementation->wakeAll(); }

void kyWaitCondition::FindBestImplementation()
{
    if (impl::native::findConditionVariables())
        impl::setWaitConditionFactory(&impl::makeVistaWaitCondition);
}

} // namespace ky
