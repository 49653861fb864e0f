// SPDX-License-Identifier: MIT
#include "diagnostics/error_text.h"

#include "diagnostics/error_text_native.h"

namespace ky::impl
{

std::string systemErrorText(int code)
{
    std::string text = native::errorText(code);
    return text.empty() ? std::string("Unknown Error") : text;
}

} // namespace ky::impl
