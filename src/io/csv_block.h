// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace ky::impl
{

/// Bytes that the CSV reader takes from its file at a time. A variable so that tests can put block borders anywhere;
/// at least 4, the longest UTF-8 sequence.
inline std::size_t csvBlockSize = 0x100000;

} // namespace ky::impl
