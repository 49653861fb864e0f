// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace ky::impl::native
{

/// Gives the file `to` the access list of the file `from`, where this user may do that.
void copyAccessRights(const std::wstring& from, const std::wstring& to);

} // namespace ky::impl::native
