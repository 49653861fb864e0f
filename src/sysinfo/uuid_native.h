// SPDX-License-Identifier: MIT
#pragma once

namespace ky::impl::native
{

/// A new random UUID as 36 characters with dashes, in either case; false when the system cannot provide one.
bool createUuidText(char (&out)[36]);

} // namespace ky::impl::native
