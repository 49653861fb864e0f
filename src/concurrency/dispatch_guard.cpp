// SPDX-License-Identifier: MIT
#include "concurrency/dispatch_guard.h"

#include <ky/kyException.h>

#include <stdexcept>

namespace ky::impl
{

namespace
{

struct GuardedCall
{
    void (*function)(void*);
    void* argument;
    std::exception_ptr thrown;
    bool hasEnded;
};

/// Thrown objects are for the caller: they do not reach the guard, which would report them.
void callAndCatch(void* data)
{
    auto& call = *static_cast<GuardedCall*>(data);
    try
    {
        call.function(call.argument);
    }
    catch (...)
    {
        call.thrown = std::current_exception();
    }
    call.hasEnded = true;
}

} // namespace

std::exception_ptr callGuarded(void (*function)(void*), void* argument) noexcept
{
    GuardedCall call{function, argument, nullptr, false};
    exception::ExecGuardedCode(&callAndCatch, &call);
    if (!call.hasEnded)
        call.thrown = std::make_exception_ptr(std::runtime_error("A task of a parallel batch has crashed"));
    return call.thrown;
}

} // namespace ky::impl
