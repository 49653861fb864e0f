// SPDX-License-Identifier: MIT
#include <ky/kyException.h>

#include "diagnostics/crash_output.h"
#include "diagnostics/fault_text.h"
#include "diagnostics/guard_native.h"
#include "diagnostics/log_locks.h"
#include "diagnostics/stack_trace_native.h"
#include "platform/compiler.h"
#include "platform/forced_unwind.h"

#include <exception>

namespace ky::exception::impl
{

namespace
{

using namespace ky::impl;

struct Report
{
    native::Fault& fault;
    FaultText text;
};

void composeAndWrite(void* argument)
{
    Report& report = *static_cast<Report*>(argument);
    composeFault(report.text, report.fault);
    if (report.fault.memoryIsSafe)
        reportText(report.text.view());
    else
        writeInEmergency(report.text.view(), true);
}

/// The report itself may hit what is broken: symbols that cannot be read, a handler that faults. Then the plain
/// outputs get what there is of it.
KY_COLD void reportFault(native::Fault& fault) noexcept
{
    Report report{fault, {}};
    const HeldLogLocks held = heldLogLocks();
    if (native::runGuarded(&composeAndWrite, &report, [](native::Fault&) noexcept {}))
        return;
    native::abandonTrace();
    releaseLogLocks(held);
    writeInEmergency(report.text.view(), false);
}

KY_COLD void reportThrown(const char* what) noexcept
{
    reportText("Catch std exception : ", what == nullptr ? "[NullPtr]" : what);
}

void call(void* function) { reinterpret_cast<void (*)()>(function)(); }

} // namespace

void ExecGuardedCode(void (*fn)(void*), void* arg)
{
    const HeldLogLocks held = heldLogLocks();
    try
    {
        if (KY_UNLIKELY(!native::runGuarded(fn, arg, &reportFault)))
            releaseLogLocks(held);
    }
    KY_PASS_FORCED_UNWIND
    catch (const std::exception& thrown) { reportThrown(thrown.what()); }
    catch (...) { reportThrown("Unknown"); }
}

void ExecGuardedCode(void (*fn)()) { ExecGuardedCode(&call, reinterpret_cast<void*>(fn)); }

} // namespace ky::exception::impl
