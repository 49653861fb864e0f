// SPDX-License-Identifier: MIT
// The top floor: the one file that knows every subsystem, to start and stop them in order.
#include <ky/kySystem.h>

#include "diagnostics/signal_watchers.h"
#include "frame/library_state.h"
#include "platform/process_id_native.h"

#include <ky/kyLog.h>
#include <ky/kyStringUtils.h>
#include <ky/kySystemUtils.h>
#include <ky/kyWaitCondition.h>

namespace ky
{

namespace
{

using impl::LibraryState;

// Made at first use and never destroyed: static objects of clients may initialize before this file's statics exist, and
// terminate after they are gone.
impl::LibInitCounter& lightCounter()
{
    static impl::LibInitCounter& counter = *new impl::LibInitCounter("systemlight", true);
    return counter;
}

impl::LibInitCounter& fullCounter()
{
    static impl::LibInitCounter& counter = *new impl::LibInitCounter("systemfull", false);
    return counter;
}

void startLight()
{
    impl::setLibraryState(LibraryState::Light);
    kyLog::createInstance(false);
    kySystemUtils::InitializeSystemUtils();
    kyStringUtils::InitializeStringUtils();
    // Next in order: the resource registry, empty and without a lock.
}

void startFull()
{
    impl::setLibraryState(LibraryState::Full);
    impl::setRecordedProcessId(impl::native::currentProcessId());
    // Next in order: the lock of the resource registry.
    if (kyLog* const log = kyLog::editPtr())
        log->makeThreadSafe();
    kyWaitCondition::FindBestImplementation();
    // Next in order: the main disk query, the worker pool.
    kyLogObject(kyLogType::DEBUG, "", kyLog::editPtr(), nullptr) << "Register signal and exception watchers";
    impl::registerWatchers();
}

} // namespace

void initializeKySystem(InitType type, bool /*queryMainDisk*/)
{
    if (type != InitType::Light && type != InitType::Full)
        return;
    if (lightCounter().incrementInitCounter())
        startLight();
    if (type == InitType::Full && fullCounter().incrementInitCounter())
        startFull();
}

void terminateKySystem()
{
    if (!lightCounter().decrementInitCounter())
        return;
    fullCounter().clearInitCounter();
    // First in order, when full: the worker pool.
    impl::unregisterWatchers();
    // Then the resource registry with its lock.
    kyStringUtils::TerminateStringUtils();
    kySystemUtils::TerminateSystemUtils();
    kyLog::destroyInstance();
    impl::setLibraryState(LibraryState::None);
}

} // namespace ky
