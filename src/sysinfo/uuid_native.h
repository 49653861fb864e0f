// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace ky::impl::native
{

/// A new random UUID as 36 characters with dashes, in either case; false when the system cannot provide one.
bool createUuidText(std::string& out);

} // namespace ky::impl::native
