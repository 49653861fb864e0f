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
    if (origin == native::SignalOrigin::Raised)
        reportText(text.view());
    else
        writeLastMessage(text.view(), number);
}

} // namespace

void registerWatchers()
{
    // What a crash must not ask for.
    LineClock().text();
    native::prepareThread();
    for (const int number : watchedSignals)
        native::watchSignal(number, &report);
    sRegistered = true;
}

void unregisterWatchers()
{
    for (const int number : watchedSignals)
        native::unwatchSignal(number);
    sRegistered = false;
}

} // namespace impl

bool exception::IsSigWatcherRegistered() { return ky::impl::sRegistered; }

} // namespace ky
