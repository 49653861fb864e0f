// SPDX-License-Identifier: MIT
#pragma once

namespace ky::impl::native
{

/// Whether the process is ending and its other threads have been stopped wherever they were: locks that they held are
/// never given back.
bool processIsEnding() noexcept;

} // namespace ky::impl::native
