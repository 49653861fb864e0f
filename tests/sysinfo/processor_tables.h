// SPDX-License-Identifier: MIT
#pragma once

#include "sysinfo/cpu_decode.h"

#include <map>
#include <string>
#include <vector>

namespace ky::test
{

/// What one processor answers, and what has to be read from it. Leaves that are not listed are zero.
struct RecordedProcessor
{
    const char* name;
    std::map<std::uint32_t, impl::ProcessorRegisters> leaves;
    std::uint64_t extendedControl;
    const char* vendor;
    const char* brand;
    const char* sets; ///< names with blanks between them
    bool hypervisor;
    bool hyperThreaded;
};

const std::vector<RecordedProcessor>& recordedProcessors();

const RecordedProcessor& recordedProcessor(const std::string& name);

/// Answers like the processor itself: a leaf that it does not have gives what the highest standard leaf gives.
impl::CpuQuery queryOf(const RecordedProcessor& processor);

} // namespace ky::test
