// SPDX-License-Identifier: MIT
// For every room. Number to text on the stack, the same under every locale.
#pragma once

#include "text/real_format.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ky::impl
{

/// A double as a standard output stream writes it by default: general notation, 6 significant digits, "inf", "nan".
class RealText : public ShortReal
{
public:
    explicit RealText(double value) noexcept : ShortReal(value, 6) {}
};

/// A signed integer in decimal.
class IntegerText
{
public:
    explicit IntegerText(std::int64_t value) noexcept;
    [[nodiscard]] std::string_view view() const noexcept { return {buffer_.data(), size_}; }

private:
    std::array<char, 24> buffer_;
    std::size_t size_;
};

} // namespace ky::impl
