// SPDX-License-Identifier: MIT
// The life of the resource registry, for initialization and termination.
#pragma once

namespace ky::impl
{

/// Makes the registry where there is none: without a lock, holding what the loaded modules carry.
void createResourceRegistry();

/// The same, and gives the registry its lock where it has none.
void makeResourceRegistryThreadSafe();

void destroyResourceRegistry() noexcept;

} // namespace ky::impl
