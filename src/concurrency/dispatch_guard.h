// SPDX-License-Identifier: MIT
#pragma once

#include <exception>

namespace ky::impl
{

/// Calls `function(argument)` guarded. What it has thrown; a std::runtime_error when it has crashed, which has been
/// reported then; null otherwise.
std::exception_ptr callGuarded(void (*function)(void*), void* argument) noexcept;

template <typename Callable>
std::exception_ptr callGuarded(Callable& callable) noexcept
{
    return callGuarded([](void* target) { (*static_cast<Callable*>(target))(); }, &callable);
}

} // namespace ky::impl
