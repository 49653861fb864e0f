// SPDX-License-Identifier: MIT
// The claim of a process to a name, next to the lock on the file of that name. A file can be removed or replaced by
// somebody who does not lock; the claim stays. It reaches as far as the processes of one user.
#pragma once

#include "filesystem/lock_file_native.h"

namespace ky::impl::native
{

enum class Claim
{
    Granted,
    Refused,    ///< somebody else's
    Unavailable ///< claims cannot be made: the lock on the file has to do
};

/// Claims the entry `name` of the folder without waiting. `descriptor` keeps the claim until it is given to dropClaim()
/// or the process ends; -1 when nothing was granted.
Claim claimName(int folder, const std::string& name, LockSharing sharing, int& descriptor);

/// Turns a shared claim into an exclusive one. False, with the claim as it was, when somebody else shares it.
bool makeExclusive(int descriptor);

/// Children of a fork that still have the descriptor lose the claim as well.
void dropClaim(int descriptor);

} // namespace ky::impl::native
