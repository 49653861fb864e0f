// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

namespace ky::bench
{

/// Files below a folder, by the bare calls of the system: each folder opened relative to the one above, entries told
/// apart by what the listing says.
std::size_t countByBareCalls(const std::string& root);

} // namespace ky::bench
