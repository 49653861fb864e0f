// SPDX-License-Identifier: MIT
#include "text/number_text.h"

#include <charconv>

namespace ky::impl
{

RealText::RealText(double value) noexcept
{
    char* const begin = buffer_.data();
    const std::to_chars_result end = std::to_chars(begin, begin + buffer_.size(), value, std::chars_format::general, 6);
    size_ = static_cast<std::size_t>(end.ptr - begin);
}

IntegerText::IntegerText(std::int64_t value) noexcept
{
    char* const begin = buffer_.data();
    size_ = static_cast<std::size_t>(std::to_chars(begin, begin + buffer_.size(), value).ptr - begin);
}

} // namespace ky::impl
