// SPDX-License-Identifier: MIT
// A double as a standard output stream writes it in the classic locale.
#pragma once

#include <string>

namespace ky::impl
{

/// General notation with so many significant digits; 0 counts as 1, less as 6.
std::string generalReal(double value, int precision);

/// Fixed notation with so many decimals; less than 0 counts as 6.
std::string fixedReal(double value, int precision);

} // namespace ky::impl
