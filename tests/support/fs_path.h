// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>

namespace ky::test
{

inline std::filesystem::path fsPath(const std::string& utf8)
{
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

} // namespace ky::test
