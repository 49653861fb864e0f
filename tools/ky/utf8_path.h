// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>

namespace ky::tool
{

inline std::filesystem::path utf8Path(const std::string& text) { return std::u8string(text.begin(), text.end()); }

} // namespace ky::tool
