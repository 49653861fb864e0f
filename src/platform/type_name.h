// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <typeinfo>

namespace ky::impl
{

/// Name of a class as it stands in the source, with its namespaces.
std::string className(const std::type_info& type);

} // namespace ky::impl
