// SPDX-License-Identifier: MIT
#include "platform/type_name.h"

#include "platform/demangle.h"

#include <string_view>

namespace ky::impl
{

std::string className(const std::type_info& type)
{
    if (const auto readable = demangle(type.name()))
        return readable.get();
    constexpr std::string_view keyword = "class ";
    const std::string_view name = type.name();
    return std::string(name.substr(0, keyword.size()) == keyword ? name.substr(keyword.size()) : name);
}

} // namespace ky::impl
