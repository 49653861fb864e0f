// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace ky::impl::native
{

enum class PathKind
{
    Nothing, ///< no such name, or a link that leads nowhere
    File,    ///< an ordinary file
    Folder,
    Other ///< a device, a pipe, or something that cannot be told
};

/// What the name leads to. UTF-8; on Linux '\' counts as '/'.
PathKind pathKind(const std::string& pathUtf8);

/// Cuts the existing file to `size` bytes.
bool cutFile(const std::string& pathUtf8, std::int64_t size);

} // namespace ky::impl::native
