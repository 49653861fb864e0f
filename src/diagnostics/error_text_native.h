// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace ky::impl::native
{

/// The system's text for the error code in UTF-8; empty when there is none. Safe from any thread.
std::string errorText(int code);

/// The calling thread's last error.
int lastError() noexcept;

} // namespace ky::impl::native
