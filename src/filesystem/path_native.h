// SPDX-License-Identifier: MIT
// What only the system knows about a path text. All texts are UTF-8 and may use both separators.
#pragma once

#include <string>

namespace ky::impl::native
{

bool isRelativePath(const std::string& path);

bool isNetworkPath(const std::string& path);

/// From the root on, '.', '..' and doubled separators resolved in the text; with whichever separators. Empty on
/// failure.
std::string absolutePath(const std::string& path);

/// One component of a path, and what leads to it: as the caller typed it, the component included, and spelled as it is
/// stored, up to and including the separator before it.
struct PathComponent
{
    std::string typedPath;
    const std::string& storedFolder;
    std::string name;
};

/// The component's name as it is stored or shown; empty when it is not found.
std::string storedName(const PathComponent& component);

} // namespace ky::impl::native
