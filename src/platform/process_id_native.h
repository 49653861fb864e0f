// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace ky::impl::native
{

/// Id of the calling process, asked anew at every call: a forked child must see its own.
std::uint64_t currentProcessId() noexcept;

} // namespace ky::impl::native
