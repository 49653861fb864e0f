// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace ky::impl::native
{

enum class KnownFolder
{
    Fonts,
    CommonAppData,
    LocalAppData,
    AppData,
    Pictures,
    Documents,
    Download
};

/// As the system spells it; empty when it does not know.
std::string knownFolder(KnownFolder folder);

} // namespace ky::impl::native
