// SPDX-License-Identifier: MIT
#include "file_holder.h"

namespace ky::test
{

FileHolder::FileHolder(const std::string&) {}

FileHolder::~FileHolder() = default;

} // namespace ky::test
