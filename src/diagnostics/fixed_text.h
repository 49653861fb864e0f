// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ky::impl
{

/// A text of limited length that needs no memory, for code that must not ask for any. What does not fit is cut.
template <std::size_t Capacity>
class FixedText
{
public:
    static constexpr std::size_t capacity = Capacity;

    FixedText& operator<<(std::string_view piece) noexcept
    {
        const std::size_t size = std::min(piece.size(), Capacity - mSize);
        std::copy_n(piece.data(), size, mText + mSize);
        mSize += size;
        return *this;
    }

    FixedText& operator<<(std::uint64_t value) noexcept { return number(value, 10); }

    FixedText& hex(std::uint64_t value) noexcept { return number(value, 16); }

    std::string_view view() const noexcept { return {mText, mSize}; }
    bool empty() const noexcept { return mSize == 0; }
    void clear() noexcept { mSize = 0; }
    void cut(std::size_t size) noexcept { mSize = std::min(mSize, size); }

private:
    FixedText& number(std::uint64_t value, int base) noexcept
    {
        char digits[24];
        const char* const end = std::to_chars(digits, digits + sizeof(digits), value, base).ptr;
        return *this << std::string_view(digits, static_cast<std::size_t>(end - digits));
    }

    std::size_t mSize = 0;
    char mText[Capacity] = {};
};

} // namespace ky::impl
