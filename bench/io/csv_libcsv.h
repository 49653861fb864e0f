// SPDX-License-Identifier: MIT
// libcsv behind an interface of our own: its header has the name of another peer's.
#pragma once

#include <string>
#include <vector>

namespace ky::bench
{

std::vector<std::vector<std::string>> readWithLibcsv(const std::string& path);

/// A row of numbers and texts.
struct MixedRow
{
    int integers[3];
    double reals[3];
    std::string texts[4];
};

/// False when something could not be written.
bool writeWithLibcsv(const std::string& path, const std::vector<MixedRow>& rows);

} // namespace ky::bench
