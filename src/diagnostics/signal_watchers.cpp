// SPDX-License-Identifier: MIT
#include "diagnostics/signal_watchers.h"

#include "diagnostics/crash_output.h"
#include "diagnostics/fault_text.h"
#include "diagnostics/guard_native.h"
#include "diagnostics/log_line.h"

#include <ky/kyException.h>

#include <atomic>
#include <csignal>

namespace ky
{

namespace impl
{

namespace
{

constexpr int watchedSignals[] = {SIGFPE, SIGILL, SIGSEGV};

std::atomic<bool> sRegistered{false};

void report(int number, native::SignalOrigin origin) noexcept
{
    FixedText<32> text;
    text << "Catch signal " << signalName(number);
    switch (origin)
    {
    case native::SignalOrigin::Raised: reportText(text.view()); break;
    case native::SignalOrigin::Fault: writeLastMessage(text.view(), number); break;
    case native::SignalOrigin::Unknown: writeBounded(text.view(), number); break;
    }
}

} // namespace

void registerWatchers()
{
    if (sRegistered)
        return;
    // What a crash must not ask for.
    LineClock().text();
    native::prepareThread();
    for (const int number : watchedSignals)
        native::watchSignal(number, &report);
    sRegistered = true;
}

void unregisterWatchers()
{
    if (!sRegistered)
        return;
    for (const int number : watchedSignals)
        native::unwatchSignal(number);
    sRegistered = false;
}

} // namespace impl

bool exception::IsSigWatcherRegistered() { return ky::impl::sRegistered; }

} // namespace ky
