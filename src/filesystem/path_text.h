// SPDX-License-Identifier: MIT
// The separator rules that all path functions share.
#pragma once

#include <string>
#include <string_view>

namespace ky::impl
{

constexpr bool isSeparator(char byte) { return byte == '/' || byte == '\\'; }

/// npos when there is none.
constexpr std::size_t findLastSeparator(std::string_view path)
{
    std::size_t at = path.size();
    while (at > 0 && !isSeparator(path[at - 1]))
        --at;
    return at == 0 ? std::string_view::npos : at - 1;
}

/// Every '\' turned into '/'.
std::string withSlashes(std::string path);

/// Every '/' turned into '\'.
std::string withBackslashes(std::string path);

/// Appends `tail` with one separator between: one is inserted, or one of two dropped. An empty text on either side
/// leaves the other one as it is.
void appendPath(std::string& path, std::string_view tail);

} // namespace ky::impl
