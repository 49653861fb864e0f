// SPDX-License-Identifier: MIT
// The top floor: the one file that knows every subsystem, to start and stop them in order.
#include <ky/kySystem.h>

#include "concurrency/dispatch_pool.h"
#include "diagnostics/signal_watchers.h"
#include "frame/library_state.h"
#include "frame/resource_registry.h"
#include "platform/process_id_native.h"

#include <ky/kyLog.h>
#include <ky/kyStringUtils.h>
#include <ky/kySystemUtils.h>
#include <ky/kyWaitCondition.h>

#include <new>

namespace ky
{

namespace
{

using impl::LibraryState;

// Made at first use and never destroyed: static objects of clients may initialize before this file's statics exist, and
// terminate after they are gone. Their memory goes with the library when it is unloaded.
impl::LibInitCounter& lightCounter()
{
    alignas(impl::LibInitCounter) static unsigned char memory[sizeof(impl::LibInitCounter)];
    static impl::LibInitCounter& counter = *new (memory) impl::LibInitCounter("systemlight", true);
    return counter;
}

impl::LibInitCounter& fullCounter()
{
    alignas(impl::LibInitCounter) static unsigned char memory[sizeof(impl::LibInitCounter)];
    static impl::LibInitCounter& counter = *new (memory) impl::LibInitCounter("systemfull", false);
    return counter;
}

void startLight()
{
    impl::setLibraryState(LibraryState::Light);
    kyLog::createInstance(false);
    kySystemUtils::InitializeSystemUtils();
    kyStringUtils::InitializeStringUtils();
    impl::createResourceRegistry();
}

void startFull(bool queryMainDisk)
{
    impl::setLibraryState(LibraryState::Full);
    impl::setRecordedProcessId(impl::native::currentProcessId());
    impl::makeResourceRegistryThreadSafe();
    if (kyLog* const log = kyLog::editPtr())
        log->makeThreadSafe();
    kyWaitCondition::FindBestImplementation();
    if (queryMainDisk)
        static_cast<void>(getMainHDDDevice()); // later callers find the answer ready
    impl::createConcurrentPool(static_cast<unsigned int>(kySystemUtils::GetIdealThreadCount()));
    if (kyLog* const log = kyLog::editPtr())
        kyLogObject(kyLogType::DEBUG, "", log, nullptr) << "Register signal and exception watchers";
    impl::registerWatchers();
}

} // namespace

void initializeKySystem(InitType type, bool queryMainDisk)
{
    if (type != InitType::Light && type != InitType::Full)
        return;
    if (lightCounter().incrementInitCounter())
        startLight();
    if (type == InitType::Full && fullCounter().incrementInitCounter())
        startFull(queryMainDisk);
}

void terminateKySystem()
{
    if (!lightCounter().decrementInitCounter())
        return;
    fullCounter().clearInitCounter();
    if (impl::libraryState() == LibraryState::Full)
    {
        impl::destroyConcurrentPool();
        impl::unregisterWatchers();
    }
    impl::destroyResourceRegistry();
    kyStringUtils::TerminateStringUtils();
    kySystemUtils::TerminateSystemUtils();
    kyLog::destroyInstance();
    impl::setLibraryState(LibraryState::None);
}

} // namespace ky
