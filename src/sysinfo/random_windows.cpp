// SPDX-License-Identifier: MIT
#include "sysinfo/random_native.h"

#include "platform/win32.h"

#include <ntsecapi.h>

namespace ky::impl::native
{

// RtlGenRandom lies in a library that is loaded anyway; the newer interface would load another one.
bool secureRandom(void* buffer, std::size_t size) noexcept
{
    return RtlGenRandom(buffer, static_cast<ULONG>(size)) != FALSE;
}

} // namespace ky::impl::native
