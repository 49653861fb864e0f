// SPDX-License-Identifier: MIT
// Answers to the management queries from the tree of a Linux kernel.
#pragma once

#include "sysinfo/graphics_cards.h"
#include "sysinfo/management.h"

namespace ky::impl
{

std::vector<ManagementRow> answerFromTree(const SystemTree& tree, const PciList& readList,
                                          const ManagementQuery& query);

} // namespace ky::impl
