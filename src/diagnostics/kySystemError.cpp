// SPDX-License-Identifier: MIT
#include <ky/kySystemError.h>

#include "diagnostics/error_text.h"
#include "diagnostics/error_text_native.h"

namespace ky
{

SystemError::SystemError() : mCode(impl::native::lastError()) {}

std::string SystemError::toString() const { return impl::systemErrorText(mCode); }

} // namespace ky
