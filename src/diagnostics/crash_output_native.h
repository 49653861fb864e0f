// SPDX-License-Identifier: MIT
// What a platform owes to the crash path. Nothing here allocates or waits for a lock.
#pragma once

#include <string_view>

namespace ky::impl::native
{

/// Writes to the process's standard output, past all buffers.
void printDirectly(std::string_view text) noexcept;

/// Sleeps about a millisecond.
void pauseBriefly() noexcept;

/// The process ends about a second from now unless endLifeLimit() is called before. `signal` is how it ends where a
/// process ends by signals.
void beginLifeLimit(int signal) noexcept;
void endLifeLimit() noexcept;

} // namespace ky::impl::native
