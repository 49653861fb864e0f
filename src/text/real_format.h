// SPDX-License-Identifier: MIT
// A double as a standard output stream writes it in the classic locale.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace ky::impl
{

/// General notation with 1 to 6 significant digits, on the stack.
class ShortReal
{
public:
    ShortReal(double value, int precision) noexcept;
    [[nodiscard]] std::string_view view() const noexcept { return {mBuffer.data(), mSize}; }

private:
    std::array<char, 32> mBuffer; // what copies whole words may leave bytes behind the end
    std::size_t mSize = 0;
};

/// General notation with so many significant digits; 0 counts as 1, less as 6.
std::string generalReal(double value, int precision);

/// Fixed notation with so many decimals; less than 0 counts as 6.
std::string fixedReal(double value, int precision);

} // namespace ky::impl
