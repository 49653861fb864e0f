// SPDX-License-Identifier: MIT
#include "text/number_text.h"

#include <charconv>

namespace ky::impl
{

IntegerText::IntegerText(std::int64_t value) noexcept
{
    char* const begin = buffer_.data();
    size_ = static_cast<std::size_t>(std::to_chars(begin, begin + buffer_.size(), value).ptr - begin);
}

} // namespace ky::impl
