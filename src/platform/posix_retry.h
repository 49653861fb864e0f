// SPDX-License-Identifier: MIT
// Repeats a call that a signal interrupted. For *_linux.cpp files only. Never use it around close(): the descriptor is
// gone after the first call whatever it returns.
#pragma once

#include <cerrno>

namespace ky::impl::native
{

template <typename Call>
auto retryInterrupted(Call call) -> decltype(call())
{
    for (;;)
    {
        const auto result = call();
        if (result != -1 || errno != EINTR)
            return result;
    }
}

} // namespace ky::impl::native
