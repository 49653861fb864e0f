// SPDX-License-Identifier: MIT
// For *_linux.cpp files only.
#pragma once

#include <string>

namespace ky::impl::native
{

/// The system's pci.ids, cut at 8 MiB; empty when it has none.
std::string readPciList();

} // namespace ky::impl::native
