// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace ky::impl::native
{

/// Device of the disk that holds the system, UTF-8; empty when there is none or the system does not tell.
std::string mainDisk();

} // namespace ky::impl::native
