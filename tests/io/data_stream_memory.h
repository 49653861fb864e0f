// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace ky::test
{

/// Memory of this process that really lies in RAM, in bytes.
std::size_t residentMemory();

} // namespace ky::test
