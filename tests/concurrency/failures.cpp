// SPDX-License-Identifier: MIT
#include "concurrency/thread_support.h"
#include "diagnostics/guard_faults.h"

#include <ky/kyLog.h>

#include <algorithm>
#include <stdexcept>

namespace ky::test
{

std::vector<std::function<void()>> failures()
{
    std::vector<std::function<void()>> all{[] { throw std::runtime_error("boom"); }, [] { throw 1; }};
    const auto isNullWrite = [](const FaultSample& sample) { return sample.kind == FaultKind::NullWrite; };
    const std::vector<FaultSample> faults = faultSamples();
    if (std::any_of(faults.begin(), faults.end(), isNullWrite))
        all.emplace_back([] { commit(FaultKind::NullWrite); });
    return all;
}

Silence::Silence() { kyLog::edit().setLogTypeEnabled(kyLogType::CRITICAL, false); }

Silence::~Silence() { kyLog::edit().setLogTypeEnabled(kyLogType::CRITICAL, true); }

} // namespace ky::test
