// SPDX-License-Identifier: MIT
#include "platform/type_name.h"

#include <string_view>

#if __has_include(<cxxabi.h>)
#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#endif

namespace ky::impl
{

std::string className(const std::type_info& type)
{
    const std::string_view name = type.name();
#if __has_include(<cxxabi.h>)
    struct Free
    {
        void operator()(char* text) const noexcept { std::free(text); }
    };
    const std::unique_ptr<char, Free> readable(abi::__cxa_demangle(type.name(), nullptr, nullptr, nullptr));
    return readable ? std::string(readable.get()) : std::string(name);
#else
    constexpr std::string_view keyword = "class ";
    return std::string(name.substr(0, keyword.size()) == keyword ? name.substr(keyword.size()) : name);
#endif
}

} // namespace ky::impl
