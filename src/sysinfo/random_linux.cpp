// SPDX-License-Identifier: MIT
#include "sysinfo/random_native.h"

#include "platform/posix_retry.h"

#include <sys/random.h>

namespace ky::impl::native
{

bool secureRandom(void* buffer, std::size_t size) noexcept
{
    // Up to 256 bytes come whole once the source is seeded.
    return retryInterrupted([&] { return ::getrandom(buffer, size, 0); }) == static_cast<ssize_t>(size);
}

} // namespace ky::impl::native
