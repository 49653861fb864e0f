// SPDX-License-Identifier: MIT
// The logger's locks that the calling thread holds. A hardware fault abandons the frames that would have released them.
#pragma once

namespace ky::impl
{

struct HeldLogLocks
{
    int inProcess = 0; ///< levels of the logger's own lock
    int file = 0;      ///< levels of the lock that processes share
};

HeldLogLocks heldLogLocks() noexcept;

/// Releases what the calling thread has taken beyond `keep`.
void releaseLogLocks(const HeldLogLocks& keep) noexcept;

} // namespace ky::impl
