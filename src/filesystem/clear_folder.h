// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace ky::impl
{

/// Removes what is in the folder, and the folder itself when asked to. Links are removed, never entered; the folder
/// must not be one. Stops at the first thing that cannot be removed, or, when canceled, after the first entry.
///
/// \return empty on success, else what failed, the system's code and the path
std::string clearFolder(const std::string& path, bool removeFolder, bool isCanceled);

} // namespace ky::impl
