// SPDX-License-Identifier: MIT
#include "sysinfo/management_native.h"

#include "sysinfo/management_answers.h"
#include "sysinfo/pci_list_linux.h"
#include "sysinfo/system_tree_linux.h"

namespace ky::impl::native
{

struct ManagementSession::State
{
};

ManagementSession::ManagementSession() = default;
ManagementSession::~ManagementSession() = default;

bool ManagementSession::connect(ManagementStep&, std::uint32_t&) { return true; }

std::vector<ManagementRow> ManagementSession::select(const ManagementQuery& query)
{
    return answerFromTree(systemTree(), &readPciList, query);
}

} // namespace ky::impl::native
