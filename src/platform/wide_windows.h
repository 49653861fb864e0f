// SPDX-License-Identifier: MIT
// UTF-8 to UTF-16 and back at the boundary to the Windows API. For *_windows.cpp files only.
#pragma once

#include <string>
#include <string_view>

namespace ky::impl::native
{

/// Whole text, embedded NUL characters included; ill-formed input becomes U+FFFD.
std::wstring widen(std::string_view utf8);

/// Whole text; lone surrogates become U+FFFD.
std::string narrow(std::wstring_view wide);

/// The path as the file functions take it: '/' becomes '\\', and an absolute path of 248 characters or more gets the
/// long-path prefix.
std::wstring widePath(std::string_view utf8);

/// The path from the root on, with the long-path prefix and without a separator at its end: names appended to it are
/// taken as they are, blanks and dots at their end and names of devices included.
std::wstring exactPath(std::string_view utf8);

} // namespace ky::impl::native
