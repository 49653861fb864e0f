// SPDX-License-Identifier: MIT
#pragma once

namespace ky::impl
{

/// Runs what must not take the process down when it fails.
inline void guardedCall(void (*body)(void*), void* argument)
{
    try
    {
        body(argument);
    }
    catch (...)
    {
    }
}

} // namespace ky::impl
