// SPDX-License-Identifier: MIT
// libcsv behind an interface of our own: its header has the name of another peer's.
#pragma once

#include <string>
#include <vector>

namespace ky::bench
{

std::vector<std::vector<std::string>> readWithLibcsv(const std::string& path);

} // namespace ky::bench
