// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <exception>
#include <memory>

#if defined(__GLIBCXX__) || defined(_LIBCPP_VERSION)
#include <cxxabi.h>
#endif

namespace ky::impl
{

struct FreeText
{
    void operator()(char* text) const noexcept { std::free(text); }
};

/// The name of a linker symbol as it reads in the source; null when it is readable as it is, or without memory.
inline std::unique_ptr<char, FreeText> demangle(const char* symbol) noexcept
{
#if defined(__GLIBCXX__) || defined(_LIBCPP_VERSION)
    return std::unique_ptr<char, FreeText>(abi::__cxa_demangle(symbol, nullptr, nullptr, nullptr));
#else
    static_cast<void>(symbol);
    return nullptr;
#endif
}

} // namespace ky::impl
