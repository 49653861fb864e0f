// SPDX-License-Identifier: MIT
#pragma once

#include "sysinfo/management.h"

#include <memory>

namespace ky::impl::native
{

/// A connection to what answers management queries. For one thread. Leaves the thread as it was found.
class ManagementSession
{
public:
    ManagementSession();
    ~ManagementSession();
    ManagementSession(const ManagementSession&) = delete;
    ManagementSession& operator=(const ManagementSession&) = delete;

    /// False with the step that failed and the system's code.
    bool connect(ManagementStep& failedStep, std::uint32_t& code);

    /// After connect() only. Empty when the query fails or is not answered within some seconds; at most 64 rows.
    std::vector<ManagementRow> select(const ManagementQuery& query);

private:
    struct State;
    std::unique_ptr<State> mState;
};

} // namespace ky::impl::native
