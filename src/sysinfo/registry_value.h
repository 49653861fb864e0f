// SPDX-License-Identifier: MIT
#pragma once

#include "sysinfo/registry_native.h"

#include <ky/kyVariant.h>

namespace ky::impl
{

/// The stored bytes need not fit their type: anyone may write texts without an end and numbers of any size.
kyVariant registryValue(const native::RegistryData& data);

} // namespace ky::impl
