// SPDX-License-Identifier: MIT
// A double in general notation with 3 significant digits, on the stack.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace ky::impl
{

class ThreeDigitText
{
public:
    explicit ThreeDigitText(double value) noexcept;
    [[nodiscard]] std::string_view view() const noexcept { return {mBuffer.data(), mSize}; }

private:
    bool writeUsual(double value) noexcept;

    std::array<char, 24> mBuffer;
    std::size_t mSize = 0;
};

} // namespace ky::impl
