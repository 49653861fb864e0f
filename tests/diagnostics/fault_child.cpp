// SPDX-License-Identifier: MIT
// fault_child SCENE LOG: a program that faults outside guarded code, in the way that the scene says.
#include "child/utf8_arguments.h"
#include "diagnostics/guard_faults.h"

#include <ky/kyException.h>
#include <ky/kyLog.h>
#include <ky/kySystem.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <map>
#include <thread>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
/// Faults are the business of the program.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options()
{
    return "handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0:handle_sigtrap=0:detect_leaks=0";
}
#endif

namespace
{

using ky::test::FaultKind;

std::atomic<bool> sBusy{false};
void (*sInHandler)() = nullptr;

void sleepForEver()
{
    for (;;)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

void onMessage(const std::string& message, ky::kyLogType, const std::string&, void*)
{
    if (sInHandler != nullptr && message != "first line")
        sInHandler();
}

void becomeBusy(void (*inHandler)())
{
    sInHandler = inHandler;
    ky::kyLog::edit().installCustomHandler(&onMessage, nullptr);
}

void hangBusily()
{
    sBusy = true;
    sleepForEver();
}

void waitUntilBusy()
{
    while (!sBusy)
        std::this_thread::yield();
}

/// The logger's lock stays with a thread that never gives it back.
void logAndKeepTheLock()
{
    becomeBusy(&hangBusily);
    std::thread([] { ky::logInfo() << "never returns"; }).detach();
    waitUntilBusy();
}

/// Nothing but blocks that come from and go to the allocator's shared lists.
void allocateForEver()
{
    for (std::size_t n = 0;; ++n)
    {
        void* volatile block = std::malloc(1100 + n % 50 * 64);
        std::free(block);
    }
}

int faultWhileAllocating()
{
    std::thread worker(
        []
        {
            sBusy = true;
            allocateForEver();
        });
    waitUntilBusy();
    std::this_thread::sleep_for(
        std::chrono::microseconds(std::chrono::steady_clock::now().time_since_epoch().count() % 2000));
    if (!ky::test::deliverFault(worker))
        return 77;
    worker.join();
    return 0;
}

/// The allocator's lock is never given back, and the report is made all the same.
int faultInAllocatorUnderGuard()
{
    std::thread(
        []
        {
            ky::exception::ExecGuardedCode([] {}); // needs memory the first time
            const bool isSpoilt = ky::test::spoilArenaOf(std::malloc(5000));
            if (isSpoilt)
                ky::exception::ExecGuardedCode(&allocateForEver);
            sBusy = isSpoilt;
            sleepForEver();
        })
        .detach();
    waitUntilBusy();
    ky::logInfo() << "still here";
    std::_Exit(0);
}

/// No memory can be had, nor the logger's lock.
int faultInAllocatorWhileAnotherLogs()
{
    logAndKeepTheLock();
    ky::exception::ExecGuardedCode([] { ky::test::commit(FaultKind::FreeOfNothing); });
    std::_Exit(0);
}

/// The handler faults when it is handed the report of a fault.
int faultInReport()
{
    becomeBusy([] { ky::test::commit(FaultKind::NullWrite); });
    ky::exception::ExecGuardedCode([] { ky::test::commit(FaultKind::DivisionByZero); });
    sInHandler = nullptr;
    ky::logInfo() << "still here";
    std::exit(0);
}

int faultWhileAnotherLogs()
{
    logAndKeepTheLock();
    ky::test::commit(FaultKind::NullWrite);
    return 0;
}

int faultInHandler()
{
    becomeBusy([] { ky::test::commit(FaultKind::NullWrite); });
    ky::logInfo() << "in the handler";
    return 0;
}

int handlerThatHangs()
{
    becomeBusy(&sleepForEver);
    ky::test::commit(FaultKind::NullWrite);
    return 0;
}

/// The handler faults in another way when it is handed the last message.
int handlerThatDivides()
{
    becomeBusy([] { ky::test::commit(FaultKind::DivisionByZero); });
    ky::test::commit(FaultKind::NullWrite);
    return 0;
}

/// The report of a raised signal never ends; a real fault does not wait for it for ever.
int faultWhileARaisedSignalIsReported()
{
    becomeBusy(&hangBusily);
    std::thread([] { std::raise(SIGFPE); }).detach();
    waitUntilBusy();
    ky::test::commit(FaultKind::NullWrite);
    return 0;
}

int fourThreads()
{
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back(
            []
            {
                waitUntilBusy();
                ky::test::commit(FaultKind::NullWrite);
            });
    sBusy = true;
    for (std::thread& thread : threads)
        thread.join();
    return 0;
}

int commitOne(FaultKind kind)
{
    ky::test::commit(kind);
    return 0;
}

/// Reported and survived once; the next one ends the process.
int raiseTwice()
{
    std::raise(SIGFPE);
    ky::logInfo() << "still here";
    std::raise(SIGFPE);
    return 0;
}

/// Guarded code goes on to be guarded after the one message of the watcher.
int raiseThenGuard()
{
    std::raise(SIGSEGV);
    ky::exception::ExecGuardedCode([] { ky::test::commit(FaultKind::NullWrite); });
    ky::logInfo() << "still here";
    std::exit(0);
}

const std::map<std::string, std::function<int()>> scenes = {
    {"null", [] { return commitOne(FaultKind::NullWrite); }},
    {"division", [] { return commitOne(FaultKind::DivisionByZero); }},
    {"illegal", [] { return commitOne(FaultKind::IllegalInstruction); }},
    {"overflow", [] { return commitOne(FaultKind::StackOverflow); }},
    {"guarded-allocating", &faultInAllocatorUnderGuard},
    {"guarded-locked-out", &faultInAllocatorWhileAnotherLogs},
    {"report-faults", &faultInReport},
    {"allocating", &faultWhileAllocating},
    {"another-logs", &faultWhileAnotherLogs},
    {"in-handler", &faultInHandler},
    {"handler-hangs", &handlerThatHangs},
    {"handler-divides", &handlerThatDivides},
    {"raised-hangs", &faultWhileARaisedSignalIsReported},
    {"four-threads", &fourThreads},
    {"raise-twice", &raiseTwice},
    {"raise-then-guard", &raiseThenGuard},
    {"foreign-handler", [] { return commitOne(FaultKind::NullWrite); }},
};

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> arguments = ky::test::utf8Arguments(argc, argv);
    if (arguments.at(0) == "foreign-handler")
        ky::test::exitAtFault(42);
    ky::initializeKySystem(ky::InitType::Full, false);
    ky::kyLog::edit().installFileHandlerExUtf8(arguments.at(1), ky::kyLog::EchoToStandardOutput, -1, 0);
    ky::logInfo() << "first line";
    return scenes.at(arguments.at(0))();
}
