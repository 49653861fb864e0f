// SPDX-License-Identifier: MIT
// The forms without vector code: for processors that lack it, for short texts, and to find the exact place of an error.
#pragma once

#include "text/utf8_scan.h"

namespace ky::impl
{

std::size_t portableUtf8Prefix(const char* data, std::size_t size) noexcept;
Utf8Count portableCountUtf8(const char* data, std::size_t size) noexcept;

} // namespace ky::impl
