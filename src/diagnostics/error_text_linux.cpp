// SPDX-License-Identifier: MIT
#include "diagnostics/error_text_native.h"

#include <cerrno>
#include <cstring>

namespace ky::impl::native
{

std::string errorText(int code)
{
    // Unlike strerror_r it tells an unknown code apart, and needs no buffer.
    const char* text = strerrordesc_np(code);
    return text == nullptr ? std::string() : std::string(text);
}

int lastError() noexcept { return errno; }

} // namespace ky::impl::native
