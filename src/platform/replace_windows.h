// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace ky::impl::native
{

/// Gives the file `to` the access list of the file `from`, where this user may do that.
void copyAccessRights(const std::wstring& from, const std::wstring& to);

/// Renames over a file that others may have open with delete sharing, which MoveFileExW refuses. False where the system
/// or the volume does not offer that (before Windows 10 1607).
bool renameOverOpenFile(const std::wstring& from, const std::wstring& to);

} // namespace ky::impl::native
