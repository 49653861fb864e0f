// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace ky::impl::native
{

/// Fills at most 256 bytes from the system's secure source. False when it has none to give.
bool secureRandom(void* buffer, std::size_t size) noexcept;

} // namespace ky::impl::native
