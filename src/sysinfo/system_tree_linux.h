// SPDX-License-Identifier: MIT
// The tree of the running kernel. For *_linux.cpp files only.
#pragma once

#include "sysinfo/system_tree.h"

namespace ky::impl::native
{

/// `root` stands before every path that is asked for and is cut off from what resolve() answers. It has no separator at
/// its end and leads through no link.
SystemTree systemTree(const std::string& root = {});

} // namespace ky::impl::native
