// SPDX-License-Identifier: MIT
#include "support/process_state.h"

#include "support/child_process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

namespace ky::test
{

ProcessState settledState(const ProcessState& before)
{
    ProcessState after;
    EXPECT_TRUE(eventually(
        [&]
        {
            after = processState();
            return after.threads == before.threads && after.handles == before.handles;
        }))
        << before << '\n'
        << after;
    return after;
}

std::size_t leftOver(const ProcessState& before, const ProcessState& after)
{
    return std::max(after.threads, before.threads) - before.threads + std::max(after.handles, before.handles) -
           before.handles;
}

std::ostream& operator<<(std::ostream& out, const ProcessState& state)
{
    out << state.threads << " threads, " << state.handles << " handles, " << state.heapBytes << " bytes, dispositions";
    for (const auto disposition : state.dispositions)
        out << ' ' << reinterpret_cast<const void*>(disposition);
    return out;
}

} // namespace ky::test
